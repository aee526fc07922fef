#include "store/ui/LabelsPane.h"

#include "store/LabelSettings.h"
#include "store/Labels.h"
#include "store/ui/Named.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
const QString ResetTitle = QStringLiteral("Reset to Defaults");
const QString PaneName = QStringLiteral("Labels");
const QString LabelSuffix = QStringLiteral(" label");

// What each label is for, as the pane's captions read.
QString captionOf(const QString &key)
{
    static const QHash<QString, QString> captions = {
        {QStringLiteral("CourseField1"), QStringLiteral("Course Field 1:")},
        {QStringLiteral("CourseField2"), QStringLiteral("Course Field 2:")},
        {QStringLiteral("CourseField3"), QStringLiteral("Course Field 3:")},
        {QStringLiteral("CourseField4"), QStringLiteral("Course Field 4:")},
        {QStringLiteral("CourseField5"), QStringLiteral("Course Field 5:")},
        {QStringLiteral("CourseField6"), QStringLiteral("Course Field 6:")},
        {QStringLiteral("TextbookField1"), QStringLiteral("Textbook Field 1:")},
        {QStringLiteral("TextbookField2"), QStringLiteral("Textbook Field 2:")},
        {QStringLiteral("TextbookField3"), QStringLiteral("Textbook Field 3:")},
        {QStringLiteral("TextbookField4"), QStringLiteral("Textbook Field 4:")},
        {QStringLiteral("TextbookField5"), QStringLiteral("Textbook Field 5:")},
    };
    return captions.value(key, key + QLatin1Char(':'));
}

QString objectNameOf(const QString &key)
{
    QString name = key;
    name.remove(QLatin1Char(' '));
    name[0] = name[0].toLower();
    return name + QStringLiteral("Label");
}
} // namespace

LabelsPane::LabelsPane(QWidget *parent)
    : PreferencePane(parent)
{
    named(this, QStringLiteral("labelsView"), PaneName);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    form->setVerticalSpacing(4);
    for (const QString &key : LabelSettings::orderedKeys()) {
        auto *field = named(new QLineEdit, objectNameOf(key), QString(captionOf(key)).remove(QLatin1Char(':')) + LabelSuffix);
        field->setPlaceholderText(Labels::defaultLabel(key));
        form->addRow(captionFor(field, captionOf(key)), field);
        m_fields.insert(key, field);
        connect(field, &QLineEdit::textChanged, this, &LabelsPane::setLabels);
    }
    layout->addLayout(form);
    auto *buttons = new QHBoxLayout;
    m_reset = named(new QPushButton(ResetTitle), QStringLiteral("resetLabels"), ResetTitle);
    buttons->addStretch();
    buttons->addWidget(m_reset);
    layout->addLayout(buttons);
    layout->addStretch();
    connect(m_reset, &QPushButton::clicked, this, &LabelsPane::setDefaultLabels);
    fill();
    setNextTabViews();
}

void LabelsPane::fill()
{
    m_filling = true;
    const QVariantMap labels = LabelSettings::load();
    for (const QString &key : LabelSettings::orderedKeys())
        m_fields.value(key)->setText(labels.value(key).toString());
    m_filling = false;
}

void LabelsPane::setLabels()
{
    if (m_filling)
        return;
    QVariantMap labels;
    for (const QString &key : LabelSettings::orderedKeys())
        labels.insert(key, m_fields.value(key)->text());
    LabelSettings::save(labels);
}

void LabelsPane::setDefaultLabels()
{
    LabelSettings::resetToDefaults();
    fill();
}

void LabelsPane::setNextTabViews()
{
    QWidget *previous = nullptr;
    for (const QString &key : LabelSettings::orderedKeys()) {
        QWidget *field = m_fields.value(key);
        if (previous)
            setTabOrder(previous, field);
        previous = field;
    }
    if (previous)
        setTabOrder(previous, m_reset);
}

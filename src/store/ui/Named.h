#pragma once

#include <QString>
#include <QWidget>

// Every control gets an object name (tests and style sheets find it by that) and an accessible name
// (what a screen reader says).
template<typename W>
W *named(W *widget, const QString &objectName, const QString &accessibleName)
{
    widget->setObjectName(objectName);
    widget->setAccessibleName(accessibleName);
    return widget;
}

#include <QLabel>

// A caption for a control: named after it, and its buddy so a screen reader pairs the two.
inline QLabel *captionFor(QWidget *buddy, const QString &text)
{
    auto *label = new QLabel(text);
    label->setObjectName(buddy->objectName() + QStringLiteral("Caption"));
    label->setBuddy(buddy);
    return label;
}

#include <QFormLayout>
#include <QLineEdit>

// The large bold name field heading the course and textbook forms.
inline QLineEdit *titleField(const QString &objectName, const QString &placeholder)
{
    auto *field = named(new QLineEdit, objectName, QString());
    field->setPlaceholderText(placeholder);
    QFont big = field->font();
    big.setPointSizeF(big.pointSizeF() * 1.25);
    big.setBold(true);
    field->setFont(big);
    return field;
}

// The numbered free fields of a form ("<prefix>1" ... "<prefix><count>"), each with a caption that
// the labels fill in later.
inline void addNumberedFields(QFormLayout *form, const QString &prefix, int count, QList<QLineEdit *> &fields,
                              QList<QLabel *> &captions)
{
    for (int i = 1; i <= count; ++i) {
        auto *field = named(new QLineEdit, prefix + QString::number(i), QString());
        auto *caption = captionFor(field, QString());
        form->addRow(caption, field);
        fields.append(field);
        captions.append(caption);
    }
}

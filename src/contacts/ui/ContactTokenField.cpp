#include "contacts/ui/ContactTokenField.h"

#include "contacts/ContactFieldDelegate.h"
#include "contacts/ContactRecord.h"
#include "contacts/ui/TokenFlowLayout.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QStringListModel>
#include <QToolButton>

namespace {
const QString ContactDescription = QStringLiteral("Contact; press Space for its menu, Delete to remove it");
const QString TextDescription = QStringLiteral("Contact; press Delete to remove it");
const char *const IndexProperty = "tokenIndex";
const QString MenuMark = QStringLiteral(" \u25BE");
} // namespace

ContactTokenField::ContactTokenField(QWidget *parent)
    : QFrame(parent)
    , m_layout(new TokenFlowLayout(this))
    , m_edit(new QLineEdit)
    , m_completer(new QCompleter(this))
    , m_completions(new QStringListModel(this))
{
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(m_edit);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    m_layout->setContentsMargins(3, 2, 3, 2);

    m_edit->setObjectName(QStringLiteral("contactTyping"));
    m_edit->setFrame(false);
    m_edit->installEventFilter(this);
    m_layout->addWidget(m_edit);

    m_completer->setModel(m_completions);
    m_completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    m_completer->setCaseSensitivity(Qt::CaseInsensitive);
    m_completer->setWidget(m_edit);
    m_completer->popup()->setObjectName(QStringLiteral("contactCompletions"));
    m_completer->popup()->setAccessibleName(tr("Matching contacts"));
    connect(m_completer, qOverload<const QString &>(&QCompleter::activated), this,
            &ContactTokenField::completionChosen);
    connect(m_edit, &QLineEdit::textEdited, this, &ContactTokenField::updateCompletions);
}

void ContactTokenField::setDelegate(ContactFieldDelegate *delegate)
{
    m_delegate = delegate;
    rebuildButtons();
}

ContactFieldDelegate *ContactTokenField::delegate() const
{
    return m_delegate ? m_delegate : ContactFieldDelegate::sharedController();
}

QString ContactTokenField::typedText() const
{
    // The typed name is taken without the blanks around it: "Ann " names the same person as "Ann".
    return m_edit->text().trimmed();
}

QVariantList ContactTokenField::tokens() const
{
    QVariantList all = m_tokens;
    if (const QString typed = typedText(); !typed.isEmpty())
        all.append(delegate()->representedObjectForEditingString(typed));
    return all;
}

void ContactTokenField::setTokens(const QVariantList &tokens)
{
    m_modified = false;
    if (tokens == m_tokens && typedText().isEmpty())
        return;
    m_tokens = tokens;
    m_edit->clear();
    rebuildButtons();
}

QString ContactTokenField::text() const
{
    QStringList names;
    for (const QVariant &token : m_tokens)
        names.append(delegate()->displayStringForRepresentedObject(token));
    if (const QString typed = typedText(); !typed.isEmpty())
        names.append(typed);
    return names.join(QStringLiteral(", "));
}

bool ContactTokenField::isModified() const
{
    return m_modified || !typedText().isEmpty();
}

void ContactTokenField::setPlaceholderText(const QString &text)
{
    m_placeholder = text;
    updatePlaceholder();
}

void ContactTokenField::updatePlaceholder()
{
    m_edit->setPlaceholderText(m_tokens.isEmpty() ? m_placeholder : QString());
}

bool ContactTokenField::commitTyping()
{
    const QString typed = typedText();
    m_completer->popup()->hide();
    if (typed.isEmpty()) {
        m_edit->clear();
        return false;
    }
    m_tokens.append(delegate()->representedObjectForEditingString(typed));
    m_edit->clear();
    m_modified = true;
    // Only the new token gets a button: the others stay, so a click on one of them, which is what
    // ended the typing, still reaches it.
    QToolButton *button = buttonFor(int(m_tokens.size()) - 1);
    m_layout->insertWidget(int(m_buttons.size()), button);
    m_buttons.append(button);
    updatePlaceholder();
    updateGeometry();
    return true;
}

void ContactTokenField::finishEditing()
{
    commitTyping();
    Q_EMIT editingFinished();
}

void ContactTokenField::rebuildButtons()
{
    for (QToolButton *button : std::as_const(m_buttons)) {
        m_layout->removeWidget(button);
        button->deleteLater();
    }
    m_buttons.clear();
    for (int i = 0; i < m_tokens.size(); ++i) {
        QToolButton *button = buttonFor(i);
        m_layout->insertWidget(i, button);
        m_buttons.append(button);
    }
    updatePlaceholder();
    updateGeometry();
}

QToolButton *ContactTokenField::buttonFor(int index)
{
    const QVariant &token = m_tokens[index];
    auto *button = new QToolButton(this);
    const QString name = delegate()->displayStringForRepresentedObject(token);
    button->setObjectName(QStringLiteral("contactToken"));
    button->setProperty(IndexProperty, index);
    button->setText(name.trimmed());
    button->setAccessibleName(name.trimmed());
    button->setToolTip(name.trimmed());
    button->setAutoRaise(false);
    button->setFocusPolicy(Qt::StrongFocus);
    button->installEventFilter(this);
    if (delegate()->hasMenuForRepresentedObject(token)) {
        button->setAccessibleDescription(ContactDescription);
        auto *menu = new QMenu(button);
        menu->setObjectName(QStringLiteral("contactMenu"));
        menu->setAccessibleName(name.trimmed());
        menu->setToolTipsVisible(true);
        // Built when it opens, so it reflects the desktop as it is then (a contacts program just
        // installed), and so the delegate acts on this token.
        connect(menu, &QMenu::aboutToShow, this, [this, menu, button] {
            menu->clear();
            const int at = button->property(IndexProperty).toInt();
            if (at < m_tokens.size())
                menu->addActions(delegate()->menuForRepresentedObject(m_tokens[at], menu));
        });
        button->setMenu(menu);
        button->setPopupMode(QToolButton::InstantPopup);
        // The style's arrow would sit over the name; a small one after the name says the same.
        button->setText(name.trimmed() + MenuMark);
        button->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; width: 0px; }"));
    } else {
        button->setAccessibleDescription(TextDescription);
    }
    return button;
}

void ContactTokenField::removeToken(int index)
{
    if (index < 0 || index >= m_tokens.size())
        return;
    m_tokens.removeAt(index);
    m_modified = true;
    QToolButton *removed = m_buttons.takeAt(index);
    m_layout->removeWidget(removed);
    removed->hide();
    removed->deleteLater();
    for (int i = index; i < m_buttons.size(); ++i)
        m_buttons[i]->setProperty(IndexProperty, i);
    updatePlaceholder();
    updateGeometry();
    const int next = qMin(index, int(m_buttons.size()) - 1);
    if (next >= 0)
        m_buttons[next]->setFocus(Qt::OtherFocusReason);
    else
        m_edit->setFocus(Qt::OtherFocusReason);
    Q_EMIT editingFinished();
}

void ContactTokenField::updateCompletions(const QString &text)
{
    const QString typed = text.trimmed();
    // A comma ends a token, as Return does.
    if (text.contains(QLatin1Char(','))) {
        const QStringList parts = text.split(QLatin1Char(','));
        for (qsizetype i = 0; i + 1 < parts.size(); ++i) {
            m_edit->setText(parts[i]);
            commitTyping();
        }
        m_edit->setText(parts.last().trimmed());
        Q_EMIT editingFinished();
        return;
    }
    if (typed.isEmpty()) {
        m_completer->popup()->hide();
        return;
    }
    const QStringList names = delegate()->completionsForSubstring(typed, int(m_tokens.size()), nullptr);
    m_completions->setStringList(names);
    if (names.isEmpty())
        m_completer->popup()->hide();
    else
        m_completer->complete();
}

void ContactTokenField::completionChosen(const QString &name)
{
    m_edit->setText(name);
    finishEditing();
}

void ContactTokenField::focusInEvent(QFocusEvent *event)
{
    QFrame::focusInEvent(event);
    m_edit->setFocus(event->reason());
}

bool ContactTokenField::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_edit) {
        if (event->type() == QEvent::KeyPress) {
            const auto *key = static_cast<QKeyEvent *>(event);
            if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && !m_completer->popup()->isVisible()) {
                finishEditing();
                return true;
            }
            if (key->key() == Qt::Key_Backspace && m_edit->text().isEmpty() && !m_tokens.isEmpty()) {
                removeToken(int(m_tokens.size()) - 1);
                m_edit->setFocus(Qt::OtherFocusReason);
                return true;
            }
            if (key->key() == Qt::Key_Left && m_edit->cursorPosition() == 0 && !m_buttons.isEmpty()) {
                m_buttons.last()->setFocus(Qt::BacktabFocusReason);
                return true;
            }
        } else if (event->type() == QEvent::FocusOut) {
            const auto *focus = static_cast<QFocusEvent *>(event);
            // The completion list taking the keyboard is not the end of the typing.
            if (focus->reason() != Qt::PopupFocusReason)
                finishEditing();
        }
        return QFrame::eventFilter(watched, event);
    }
    if (auto *button = qobject_cast<QToolButton *>(watched); button && m_buttons.contains(button)) {
        if (event->type() == QEvent::KeyPress) {
            const auto *key = static_cast<QKeyEvent *>(event);
            const int index = button->property(IndexProperty).toInt();
            if (key->key() == Qt::Key_Delete || key->key() == Qt::Key_Backspace) {
                removeToken(index);
                return true;
            }
            if (key->key() == Qt::Key_Right && index == m_buttons.size() - 1) {
                m_edit->setFocus(Qt::TabFocusReason);
                return true;
            }
        }
    }
    return QFrame::eventFilter(watched, event);
}

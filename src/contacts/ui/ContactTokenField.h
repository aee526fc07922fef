#pragma once

#include <QFrame>
#include <QVariantList>

class ContactFieldDelegate;
class QCompleter;
class QLineEdit;
class QStringListModel;
class QToolButton;
class TokenFlowLayout;

// The contacts field of assignments and courses: each token (a contact record or a plain text) is
// a button showing its name, and a contact's button opens its menu; after the tokens the user types
// a name, completed from the address book, which becomes a token at a comma, at Return, when a
// completion is chosen, or when the keyboard leaves the field. Tokens are kept exactly as they were
// given: a record's keys never change because the field showed it.
class ContactTokenField : public QFrame
{
    Q_OBJECT
public:
    explicit ContactTokenField(QWidget *parent = nullptr);
    // The delegate used instead of the shared one (another address book).
    void setDelegate(ContactFieldDelegate *delegate);

    // The tokens, with a name still being typed as the token it will become.
    QVariantList tokens() const;
    // Shows these tokens; a name being typed is dropped unless the tokens are the ones shown.
    void setTokens(const QVariantList &tokens);
    // The tokens' shown names and the typed text, as one line; empty exactly when the field is.
    QString text() const;
    QString typedText() const;
    // Turns the typed name into a token. False when nothing was typed.
    bool commitTyping();
    void setPlaceholderText(const QString &text);
    // Something changed since the last setModified(false) or setTokens, or a name is being typed.
    bool isModified() const;
    void setModified(bool modified) { m_modified = modified; }

    QLineEdit *lineEdit() const { return m_edit; }
    QList<QToolButton *> tokenButtons() const { return m_buttons; }
    QCompleter *completer() const { return m_completer; }

Q_SIGNALS:
    // The user is done with a change: a token was added or removed, or the keyboard left the field.
    void editingFinished();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    ContactFieldDelegate *delegate() const;
    void rebuildButtons();
    QToolButton *buttonFor(int index);
    void removeToken(int index);
    void updateCompletions(const QString &text);
    void completionChosen(const QString &name);
    void finishEditing();
    void updatePlaceholder();

    ContactFieldDelegate *m_delegate = nullptr;
    TokenFlowLayout *m_layout;
    QLineEdit *m_edit;
    QCompleter *m_completer;
    QStringListModel *m_completions;
    QVariantList m_tokens;
    QList<QToolButton *> m_buttons;
    QString m_placeholder;
    bool m_modified = false;
};

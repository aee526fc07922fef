#include "widgets/FieldUndo.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QSignalBlocker>
#include <QTextEdit>

namespace {
bool isTextField(QObject *object)
{
    return qobject_cast<QLineEdit *>(object) || qobject_cast<QTextEdit *>(object)
        || qobject_cast<QPlainTextEdit *>(object);
}

// A text field takes Ctrl+Z for itself even when it has nothing to undo; then the key is let go.
class ShortcutHandOver : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ShortcutOverride) {
            auto *key = static_cast<QKeyEvent *>(event);
            const bool undo = key->matches(QKeySequence::Undo);
            if ((undo || key->matches(QKeySequence::Redo)) && watched == QApplication::focusWidget()
                && isTextField(watched) && !FieldUndo::fieldWithOwnStep(undo)) {
                event->ignore();
                return true;
            }
        }
        return QObject::eventFilter(watched, event);
    }
};
} // namespace

QList<QKeySequence> FieldUndo::redoKeys()
{
    QList<QKeySequence> keys = QKeySequence::keyBindings(QKeySequence::Redo);
    const QKeySequence always(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    if (!keys.contains(always))
        keys.append(always);
    return keys;
}

QWidget *FieldUndo::fieldWithOwnStep(bool undo)
{
    QWidget *focus = QApplication::focusWidget();
    if (auto *line = qobject_cast<QLineEdit *>(focus))
        return !line->isReadOnly() && (undo ? line->isUndoAvailable() : line->isRedoAvailable()) ? line : nullptr;
    QTextDocument *document = nullptr;
    bool readOnly = true;
    if (auto *text = qobject_cast<QTextEdit *>(focus)) {
        document = text->document();
        readOnly = text->isReadOnly();
    } else if (auto *plain = qobject_cast<QPlainTextEdit *>(focus)) {
        document = plain->document();
        readOnly = plain->isReadOnly();
    }
    if (!document || readOnly)
        return nullptr;
    return (undo ? document->isUndoAvailable() : document->isRedoAvailable()) ? focus : nullptr;
}

bool FieldUndo::inField(bool undo)
{
    QWidget *field = fieldWithOwnStep(undo);
    if (auto *line = qobject_cast<QLineEdit *>(field))
        undo ? line->undo() : line->redo();
    else if (auto *text = qobject_cast<QTextEdit *>(field))
        undo ? text->undo() : text->redo();
    else if (auto *plain = qobject_cast<QPlainTextEdit *>(field))
        undo ? plain->undo() : plain->redo();
    return field != nullptr;
}

void FieldUndo::forgetTyping(QWidget *root)
{
    const QList<QLineEdit *> lines = root->findChildren<QLineEdit *>();
    for (QLineEdit *line : lines) {
        if (!line->isUndoAvailable() && !line->isRedoAvailable())
            continue;
        // Setting the text is the one public way to empty a line's undo steps.
        const int caret = line->cursorPosition();
        const bool modified = line->isModified();
        const QSignalBlocker quiet(line);
        line->setText(line->text());
        line->setCursorPosition(caret);
        line->setModified(modified);
    }
    const QList<QTextEdit *> texts = root->findChildren<QTextEdit *>();
    for (QTextEdit *text : texts)
        text->document()->clearUndoRedoStacks();
    const QList<QPlainTextEdit *> plains = root->findChildren<QPlainTextEdit *>();
    for (QPlainTextEdit *plain : plains)
        plain->document()->clearUndoRedoStacks();
}

void FieldUndo::install()
{
    static QPointer<QObject> installed;
    if (installed || !qApp)
        return;
    installed = new ShortcutHandOver(qApp);
    qApp->installEventFilter(installed);
}

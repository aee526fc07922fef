#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

class QWidget;

// Ctrl+Z and Ctrl+Shift+Z in a text field take back the field's own typing while it has some; when
// it has none, the keys go on to the window's Undo and Redo, which take back whole changes. Every
// window with an Edit menu names its items and routes its commands through here, so the keys mean
// the same in each.
namespace FieldUndo {
inline const QString UndoTypingTitle = QStringLiteral("Undo Typing");
inline const QString RedoTypingTitle = QStringLiteral("Redo Typing");

// Every binding the desktop has for redo (Ctrl+Y as well on some), and Ctrl+Shift+Z always.
QList<QKeySequence> redoKeys();
// The focused text field, when it has a step of its own to undo (redo).
QWidget *fieldWithOwnStep(bool undo);
// The typing in the text fields inside `root` was saved as a change: from now on Undo takes back
// that change rather than the keystrokes. The fields keep their text, caret and modified flag.
void forgetTyping(QWidget *root);
// Undoes (redoes) the focused field's typing; false when it has none to take back.
bool inField(bool undo);
// Hands the shortcut on from a text field with nothing of its own to undo, so the window's Undo
// takes it. Installed once for the application; later calls do nothing.
void install();
} // namespace FieldUndo

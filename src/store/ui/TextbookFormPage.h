#pragma once

#include "store/CoursesStore.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

// The textbook form of the courses window: name, course, the five free fields and the notes.
class TextbookFormPage : public QWidget
{
    Q_OBJECT
public:
    explicit TextbookFormPage(QWidget *parent = nullptr);

    // `courses` are the names the course pop-up offers.
    void fill(const QVariantMap &record, const QStringList &courses);
    CoursesStore::TextbookForm form() const;
    // Typing not yet handed on is handed on now, through editingEnded.
    void commitPendingEdit();
    void updateLabels();
    QLineEdit *nameField() const { return m_name; }

Q_SIGNALS:
    void editingEnded(bool fromNameField);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool hasPendingTyping() const;
    // Emits editingEnded for everything typed so far; a changed name makes it a rename.
    void endEditing();

    QLineEdit *m_name;
    QLabel *m_courseCaption;
    QComboBox *m_course;
    QList<QLineEdit *> m_fields;
    QList<QLabel *> m_fieldCaptions;
    QPlainTextEdit *m_notes;
};

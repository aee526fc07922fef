#pragma once

#include "store/CoursesStore.h"

#include <QWidget>

class ContactTokenField;
class QComboBox;
class QLabel;
class QLineEdit;
class QListView;
class QPlainTextEdit;
class QToolButton;
class TypesListModel;

// The course form of the courses window: name, the six free fields, the default textbook, the
// notes, the contacts and the course's own types.
class CourseFormPage : public QWidget
{
    Q_OBJECT
public:
    explicit CourseFormPage(QWidget *parent = nullptr);

    // Fills every control from the record; `textbooks` are the course's textbooks.
    void fill(const QVariantMap &record, const QStringList &textbooks);
    // Rebuilds the default-textbook pop-up ("none", then the textbooks), keeping the choice.
    void setTextbookChoices(const QStringList &textbooks, const QString &selected);
    CoursesStore::CourseForm form() const;
    // Typing not yet handed on (no Return, no focus change, a cell editor still open) is handed on
    // now, through editingEnded. Everything that reselects, reloads or saves calls this first.
    void commitPendingEdit();
    // Captions from the user's labels, in lower case.
    void updateLabels();
    QLineEdit *nameField() const { return m_name; }

Q_SIGNALS:
    // A field ended editing (or the pop-up or the types changed): the course is to be saved. With
    // `fromNameField` the name was changed since the last save, and the change is a rename.
    void editingEnded(bool fromNameField);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool hasPendingTyping() const;
    // Emits editingEnded for everything typed so far and starts afresh.
    void endEditing();
    void addType();
    void removeType();

    QLineEdit *m_name;
    QList<QLineEdit *> m_fields;
    QList<QLabel *> m_fieldCaptions;
    QLabel *m_defaultTextbookCaption;
    QComboBox *m_defaultTextbook;
    QLabel *m_typesCaption;
    QListView *m_typesTable;
    TypesListModel *m_types;
    QToolButton *m_addType;
    QToolButton *m_removeType;
    QPlainTextEdit *m_notes;
    ContactTokenField *m_contacts;
};

#pragma once

#include <QWidget>

class QLabel;
class QListView;
class QToolButton;
class TypesListModel;

// The "Types" tab of the courses window: the types valid for every course.
class UniversalTypesPage : public QWidget
{
    Q_OBJECT
public:
    explicit UniversalTypesPage(QWidget *parent = nullptr);

    void setTypes(const QStringList &types);
    QStringList types() const;
    void updateLabels();
    // A type still being typed in its cell is handed on now.
    void commitPendingEdit();
    // The explanation shown above the table, built from the user's labels.
    static QString description();

Q_SIGNALS:
    void typesEdited(const QStringList &types);

private:
    QLabel *m_description;
    QListView *m_table;
    TypesListModel *m_types;
    QToolButton *m_add;
    QToolButton *m_remove;
};

#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

// The preference of the folder of vCard files the contacts field reads when the desktop runs no
// address-book service: a path to type or a folder to pick, saved as soon as it is chosen.
class AddressBookFolderChooser : public QWidget
{
    Q_OBJECT
public:
    explicit AddressBookFolderChooser(QWidget *parent = nullptr);

    QLineEdit *folderField() const { return m_folder; }
    QPushButton *chooseButton() const { return m_choose; }
    // Shows the preference again (another window may have changed it).
    void reload();

private:
    void save(const QString &path);
    void choose();

    QLabel *m_source;
    QLineEdit *m_folder;
    QPushButton *m_choose;
};

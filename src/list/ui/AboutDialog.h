#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

// What the program is (name, version, copyright and licence) and where it keeps the student's data,
// with a button that opens that folder in the file manager: the first place to look when moving to
// a new computer or sending a backup to someone who helps.
class AboutDialog : public QDialog
{
    Q_OBJECT
public:
    static inline const QString WindowTitle = QStringLiteral("About Quillory");
    static inline const QString OpenFolderTitle = QStringLiteral("Open Data Folder");

    explicit AboutDialog(QWidget *parent = nullptr);

    QPushButton *openFolderButton() const { return m_openFolder; }
    // The data folder as shown.
    QString dataFolder() const { return m_dataFolder; }
    // The title, version, copyright and licence as shown.
    QString descriptionText() const;

private:
    void openDataFolder();

    QString m_dataFolder;
    QLabel *m_description;
    QLabel *m_folder;
    QPushButton *m_openFolder;
};

#include "contacts/ui/AddressBookFolderChooser.h"

#include "contacts/AddressBook.h"
#include "contacts/ContactsSettings.h"

#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
const QString Caption = QStringLiteral("Address book:");
const QString FolderName = QStringLiteral("Address book folder");
const QString ChooseTitle = QStringLiteral("Choose…");
const QString DialogTitle = QStringLiteral("Choose the Folder of Your vCard Files");
const QString SourceText = QStringLiteral("Contacts are read from %1.");
} // namespace

AddressBookFolderChooser::AddressBookFolderChooser(QWidget *parent)
    : QWidget(parent)
    , m_source(new QLabel)
    , m_folder(new QLineEdit)
    , m_choose(new QPushButton(ChooseTitle))
{
    setObjectName(QStringLiteral("addressBookFolderChooser"));
    m_folder->setObjectName(QStringLiteral("addressBookFolder"));
    m_folder->setAccessibleName(FolderName);
    m_folder->setToolTip(QStringLiteral("The folder of vCard files (.vcf) used when no address-book service runs"));
    m_folder->setPlaceholderText(ContactsSettings::defaultFolder());
    m_choose->setObjectName(QStringLiteral("chooseAddressBookFolder"));
    m_choose->setAccessibleName(QStringLiteral("Choose the address book folder"));
    m_source->setObjectName(QStringLiteral("addressBookSource"));
    m_source->setWordWrap(true);
    QFont small = m_source->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    m_source->setFont(small);

    auto *row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_folder, 1);
    row->addWidget(m_choose);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->setLabelAlignment(Qt::AlignRight);
    auto *caption = new QLabel(Caption);
    caption->setBuddy(m_folder);
    form->addRow(caption, row);
    form->addRow(QString(), m_source);

    connect(m_folder, &QLineEdit::editingFinished, this, [this] { save(m_folder->text().trimmed()); });
    connect(m_choose, &QPushButton::clicked, this, &AddressBookFolderChooser::choose);
    reload();
}

void AddressBookFolderChooser::reload()
{
    const QString folder = ContactsSettings::folder();
    if (!m_folder->hasFocus()) {
        m_folder->setText(folder == ContactsSettings::defaultFolder() ? QString() : QDir::toNativeSeparators(folder));
        // The start of a long path says more than its end.
        m_folder->setCursorPosition(0);
    }
    m_source->setText(SourceText.arg(AddressBook::shared().description()));
}

void AddressBookFolderChooser::save(const QString &path)
{
    const QString folder = path.isEmpty() ? QString() : QDir::cleanPath(QDir::fromNativeSeparators(path));
    if (folder != ContactsSettings::folder() || path.isEmpty())
        ContactsSettings::setFolder(folder);
    reload();
}

void AddressBookFolderChooser::choose()
{
    const QString picked = QFileDialog::getExistingDirectory(window(), DialogTitle, ContactsSettings::folder());
    if (!picked.isEmpty())
        save(picked);
}

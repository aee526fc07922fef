#include "list/ui/AboutDialog.h"

#include "BuildInfo.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/Workspace.h"
#include "widgets/Icons.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyle>
#include <QUrl>
#include <QVBoxLayout>

namespace {
const QString Summary = QStringLiteral("A planner for students: assignments, projects, courses and textbooks.");
} // namespace

AboutDialog::AboutDialog(QWidget *parent)
    : QDialog(parent)
    , m_dataFolder(QDir::cleanPath(Paths::dataFolder()))
    , m_description(new QLabel(this))
    , m_folder(new QLabel(this))
    , m_openFolder(new QPushButton(OpenFolderTitle, this))
{
    setObjectName(QStringLiteral("AboutDialog"));
    setWindowTitle(WindowTitle);
    setAccessibleName(WindowTitle);

    auto *icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("aboutIcon"));
    // Drawn from the SVG at the screen's own pixel density, so it stays sharp when scaled.
    const int side = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this) * 2;
    icon->setPixmap(Icons::own(QStringLiteral("quillory")).pixmap(QSize(side, side), devicePixelRatioF()));
    icon->setAccessibleName(tr("Quillory icon"));
    icon->setAlignment(Qt::AlignTop);

    const QString name = QString::fromLatin1(BuildInfo::BundleName).toHtmlEscaped();
    m_description->setObjectName(QStringLiteral("aboutDescription"));
    m_description->setTextFormat(Qt::RichText);
    m_description->setText(QStringLiteral("<h2>%1</h2><p>Version %2</p><p>%3</p><p>Copyright %4</p><p>Licence: %5<br>%6</p>")
                               .arg(name, QString::fromLatin1(BuildInfo::BundleVersion), Summary.toHtmlEscaped(),
                                    QString::fromUtf8(BuildInfo::Copyright).toHtmlEscaped(),
                                    QString::fromLatin1(BuildInfo::License), QString::fromUtf8(BuildInfo::LicenseText).toHtmlEscaped()));
    m_description->setWordWrap(true);
    m_description->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_description->setAccessibleName(descriptionText());

    auto *folderTitle = new QLabel(tr("Your data is kept in:"), this);
    m_folder->setObjectName(QStringLiteral("aboutDataFolder"));
    m_folder->setText(QDir::toNativeSeparators(m_dataFolder));
    m_folder->setWordWrap(true);
    // Selectable, and reachable with Tab, so the path can be copied into a terminal or an e-mail.
    m_folder->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_folder->setFocusPolicy(Qt::TabFocus);
    m_folder->setAccessibleName(tr("Data folder"));
    m_folder->setAccessibleDescription(m_dataFolder);
    folderTitle->setBuddy(m_folder);

    m_openFolder->setObjectName(QStringLiteral("openDataFolderButton"));
    m_openFolder->setAccessibleName(OpenFolderTitle);
    m_openFolder->setIcon(QIcon::fromTheme(QStringLiteral("folder-open")));
    m_openFolder->setAutoDefault(false);
    connect(m_openFolder, &QPushButton::clicked, this, &AboutDialog::openDataFolder);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->setObjectName(QStringLiteral("aboutButtons"));
    QPushButton *close = buttons->button(QDialogButtonBox::Close);
    close->setAccessibleName(tr("Close"));
    close->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *text = new QVBoxLayout;
    text->addWidget(m_description);
    text->addSpacing(fontMetrics().height() / 2);
    text->addWidget(folderTitle);
    text->addWidget(m_folder);
    auto *folderRow = new QHBoxLayout;
    folderRow->addWidget(m_openFolder);
    folderRow->addStretch();
    text->addLayout(folderRow);
    text->addStretch();

    auto *top = new QHBoxLayout;
    top->addWidget(icon);
    top->addLayout(text, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('M')) * 30);

    setTabOrder(m_folder, m_openFolder);
    setTabOrder(m_openFolder, close);
    // Opens with the keyboard on Close, so Return or Space puts the box away; Tab goes back up to the
    // folder's path.
    close->setFocus(Qt::OtherFocusReason);
}

QString AboutDialog::descriptionText() const
{
    return m_description->text().remove(QRegularExpression(QStringLiteral("<[^>]*>"))).simplified();
}

void AboutDialog::openDataFolder()
{
    // The folder exists once the program has started; a student who deleted it by hand is told
    // rather than shown an empty file manager or nothing at all.
    if (!QDir(m_dataFolder).exists()) {
        Alerts::inform(WindowTitle, tr("The data folder \u201c%1\u201d does not exist.").arg(m_dataFolder));
        return;
    }
    if (!Workspace::openFile(m_dataFolder))
        Alerts::inform(WindowTitle, tr("The file manager could not be started to show \u201c%1\u201d.").arg(m_dataFolder));
}

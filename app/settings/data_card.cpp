#include "app/settings/data_card.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>

#include "app/settings/settings_rows.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "runtime/instant_text.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kKeepLinesNote =
    "Turning this off erases every bank line already kept, at once and for good.";
constexpr std::string_view kBackupsNote =
    "Copperwick keeps the last 30 copies: one a day, and one before every import, manual entry "
    "and restore. A restore backs up the current data first.";

// The most backups the list shows before it scrolls within the page.
constexpr int kVisibleBackups = 8;

}  // namespace

DataCard::DataCard(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Data and Backups"), {}, "externaldrive", parent),
      m_bridge(bridge) {
    LedgerRuntime& runtime = m_bridge.runtime();
    const QString folder = toQString(runtime.dataFolder().string());
    m_folder = secondaryLabel(QStringLiteral("Stored in ") + folder +
                                  QStringLiteral(", on this computer only. Use full-disk "
                                                 "encryption to protect it at rest."),
                              this);
    m_folder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    body()->addWidget(m_folder);
    QLabel* file = secondaryLabel(
        QStringLiteral("Data file: ") + toQString(runtime.dataFile().filename().string()), this);
    file->setTextInteractionFlags(Qt::TextSelectableByMouse);
    body()->addWidget(file);

    m_keepLines =
        new QCheckBox(QStringLiteral("Keep the original bank lines of imported files"), this);
    m_keepLines->setAccessibleName(m_keepLines->text());
    body()->addWidget(m_keepLines);
    body()->addWidget(noteLabel(toQString(kKeepLinesNote), this, true));

    auto* head = new QHBoxLayout;
    head->addWidget(headingLabel(QStringLiteral("Backups"), this), 1);
    m_restore = pushButton(QStringLiteral("Restore\u2026"), this);
    head->addWidget(m_restore);
    m_backUpNow = pushButton(QStringLiteral("Back Up Now"), this);
    head->addWidget(m_backUpNow);
    body()->addSpacing(4);
    body()->addLayout(head);
    body()->addWidget(noteLabel(toQString(kBackupsNote), this, true));

    m_backups = new QTreeWidget(this);
    m_backups->setAccessibleName(QStringLiteral("Backups"));
    m_backups->setColumnCount(3);
    m_backups->setHeaderLabels(
        {QStringLiteral("Date"), QStringLiteral("Reason"), QStringLiteral("Size")});
    m_backups->setRootIsDecorated(false);
    m_backups->setUniformRowHeights(true);
    m_backups->setSelectionMode(QAbstractItemView::SingleSelection);
    m_backups->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_backups->header()->setStretchLastSection(false);
    m_backups->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_backups->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_backups->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    m_backups->setFrameShape(QFrame::NoFrame);
    m_backups->viewport()->setAutoFillBackground(false);
    body()->addWidget(m_backups);
    m_noBackups = noteLabel(QStringLiteral("No backups yet."), this);
    body()->addWidget(m_noBackups);

    connect(m_keepLines, &QCheckBox::toggled, this, &DataCard::keepLinesToggled);
    connect(m_backUpNow, &QPushButton::clicked, this, [this] {
        m_bridge.runtime().backUpNow();
        showBackups();
    });
    connect(m_restore, &QPushButton::clicked, this, [this] { restoreChosen(); });
    connect(m_backups, &QTreeWidget::itemSelectionChanged, this,
            [this] { m_restore->setEnabled(m_backups->currentItem() != nullptr); });
    connect(m_backups, &QTreeWidget::itemActivated, this, [this] { restoreChosen(); });
    showKeepLines();
    showBackups();
}

void DataCard::changeSaved(const SavedChange& change) {
    // Imports, entries and restores make copies of their own.
    showBackups();
    if (touches(change, RecordKind::settings))
        showKeepLines();
}

void DataCard::showKeepLines() {
    const QSignalBlocker blocker(m_keepLines);
    m_keepLines->setChecked(m_bridge.runtime().ledger().settings->keepSourceText);
}

void DataCard::keepLinesToggled(bool keep) {
    LedgerRuntime& runtime = m_bridge.runtime();
    if (!keep) {
        if (!confirmed(this, QStringLiteral("Stop Keeping Bank Lines"), toQString(kKeepLinesNote),
                       QStringLiteral("Erase Bank Lines"))) {
            showKeepLines();
            return;
        }
    }
    runtime.setKeepSourceText(keep);
    showKeepLines();
}

void DataCard::showBackups() {
    std::optional<std::filesystem::path> chosen;
    if (const QTreeWidgetItem* item = m_backups->currentItem())
        chosen = toStdString(item->data(0, Qt::UserRole).toString());
    m_infos = m_bridge.runtime().backups().list();
    m_backups->clear();
    const QLocale locale;
    for (const BackupManager::Info& info : m_infos) {
        auto* item = new QTreeWidgetItem(m_backups);
        item->setText(0, toQString(abbreviatedDateTime(info.date)));
        item->setText(1, toQString(info.reason));
        item->setText(2, locale.formattedDataSize(info.bytes));
        item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
        item->setData(0, Qt::UserRole, toQString(info.url.string()));
        if (chosen == info.url)
            m_backups->setCurrentItem(item);
    }
    fitToRows(m_backups, static_cast<int>(m_infos.size()), kVisibleBackups);
    m_backups->setVisible(!m_infos.empty());
    m_noBackups->setVisible(m_infos.empty());
    m_restore->setEnabled(m_backups->currentItem() != nullptr);
}

void DataCard::restoreChosen(bool alreadyConfirmed) {
    const QTreeWidgetItem* item = m_backups->currentItem();
    if (!item)
        return;
    const auto url = toStdString(item->data(0, Qt::UserRole).toString());
    const auto found = std::find_if(m_infos.begin(), m_infos.end(),
                                    [&](const auto& info) { return info.url == url; });
    if (found == m_infos.end())
        return;
    const BackupManager::Info backup = *found;
    if (!alreadyConfirmed) {
        if (!confirmed(this, QStringLiteral("Restore Backup"),
                       QStringLiteral("Replace your data with the backup from ") +
                           toQString(abbreviatedDateTime(backup.date)) +
                           QStringLiteral("? Your current data is backed up first, so this can "
                                          "be taken back by restoring that copy."),
                       QStringLiteral("Restore")))
            return;
    }
    m_bridge.runtime().restore(backup);
    showBackups();
}

}  // namespace copperwick::app

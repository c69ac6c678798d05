#include "app/import/recent_imports_section.h"

#include <algorithm>
#include <memory>
#include <unordered_set>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/widgets/saved_change.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/import/import_commit.h"
#include "core/import/import_words.h"
#include "runtime/instant_text.h"

namespace copperwick::app {

namespace {

const QString kUndoImport = QStringLiteral("Undo Import");
constexpr int kPadding = 10;
constexpr int kLineGap = 2;

}  // namespace

ImportHistoryModel::ImportHistoryModel(const LedgerRuntime& runtime, QObject* parent)
    : QAbstractListModel(parent), m_runtime(runtime), m_batches(newestFirst()) {}

std::vector<ImportBatch> ImportHistoryModel::newestFirst() const {
    const auto& batches = m_runtime.ledger().batches;
    std::vector<ImportBatch> newest(batches.begin(), batches.end());
    std::reverse(newest.begin(), newest.end());
    return newest;
}

int ImportHistoryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_batches.size());
}

QVariant ImportHistoryModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const ImportBatch& batch = this->batch(index.row());
    const auto account = [&] {
        const Account* found = m_runtime.ledger().account(batch.accountID);
        return found ? toQString(found->name) : QStringLiteral("Unknown account");
    };
    switch (role) {
        case Qt::DisplayRole:
            return toQString(batch.fileName);
        case kAccountRole:
            return account();
        case kWhenRole:
            return toQString(abbreviatedDateTime(batch.importedAt));
        case kCountsRole:
            return toQString(importCountsLine(batch.counts));
        case kBatchIDRole:
            return toQString(batch.id.text());
        case Qt::AccessibleTextRole:
            return toQString(batch.fileName) + QStringLiteral(", ") + account() +
                   QStringLiteral(", ") + toQString(abbreviatedDateTime(batch.importedAt)) +
                   QStringLiteral(", ") + toQString(importCountsLine(batch.counts));
        case Qt::AccessibleDescriptionRole:
            return kUndoImport;
        default:
            return {};
    }
}

void ImportHistoryModel::follow(const SavedChange& change) {
    if (!change.delta) {
        beginResetModel();
        m_batches = newestFirst();
        endResetModel();
        return;
    }
    if (touches(change, {RecordKind::batch})) {
        // Imports only come and go, never move: what stays keeps its order,
        // so removing the gone ones and then inserting the new ones in place
        // brings the rows in line one by one.
        std::vector<ImportBatch> now = newestFirst();
        std::unordered_set<Uuid> kept;
        for (const auto& batch : now)
            kept.insert(batch.id);
        for (int row = rowCount() - 1; row >= 0; --row) {
            if (!kept.contains(batch(row).id)) {
                beginRemoveRows({}, row, row);
                m_batches.erase(m_batches.begin() + row);
                endRemoveRows();
            }
        }
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (i < m_batches.size() && m_batches[i].id == now[i].id) {
                if (m_batches[i] != now[i]) {
                    m_batches[i] = now[i];
                    Q_EMIT dataChanged(index(static_cast<int>(i)), index(static_cast<int>(i)));
                }
                continue;
            }
            const int row = static_cast<int>(i);
            beginInsertRows({}, row, row);
            m_batches.insert(m_batches.begin() + row, now[i]);
            endInsertRows();
        }
    }
    if (touches(change, {RecordKind::account}) && rowCount() > 0)
        Q_EMIT dataChanged(index(0), index(rowCount() - 1), {ImportHistoryModel::kAccountRole});
}

QRect ImportHistoryDelegate::buttonRect(const QRect& row, const QFontMetrics& metrics) {
    const int width = metrics.horizontalAdvance(kUndoImport) + 28;
    const int height = metrics.height() + 12;
    return {row.right() - kPadding - width, row.center().y() - height / 2, width, height};
}

QSize ImportHistoryDelegate::sizeHint(const QStyleOptionViewItem& option,
                                      const QModelIndex&) const {
    const int line = option.fontMetrics.height();
    return {option.rect.width(), 2 * kPadding + 3 * line + 2 * kLineGap};
}

void ImportHistoryDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
    painter->save();
    const QPalette& palette = option.palette;
    const QRect row = option.rect;
    if (option.state & QStyle::State_Selected && option.state & QStyle::State_HasFocus) {
        QColor tint = palette.color(QPalette::Highlight);
        tint.setAlphaF(0.35);
        painter->fillRect(row, tint);
    }
    QColor rule = palette.color(QPalette::WindowText);
    rule.setAlphaF(0.10);
    painter->setPen(rule);
    painter->drawLine(row.bottomLeft() + QPoint(kPadding, 0), row.bottomRight());

    const QFontMetrics metrics(option.font);
    const QRect button = buttonRect(row, metrics);
    const int line = metrics.height();
    const int textWidth = button.left() - row.left() - 2 * kPadding;
    QRect text(row.left() + kPadding, row.top() + kPadding, textWidth, line);

    QFont name = option.font;
    name.setWeight(QFont::DemiBold);
    painter->setFont(name);
    painter->setPen(palette.color(QPalette::Text));
    painter->drawText(
        text, Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetrics(name).elidedText(index.data().toString(), Qt::ElideRight, textWidth));
    painter->setFont(option.font);
    painter->setPen(palette.color(QPalette::PlaceholderText));
    text.translate(0, line + kLineGap);
    const QString where = index.data(ImportHistoryModel::kAccountRole).toString() +
                          QStringLiteral(" · ") +
                          index.data(ImportHistoryModel::kWhenRole).toString();
    painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                      metrics.elidedText(where, Qt::ElideRight, textWidth));
    text.translate(0, line + kLineGap);
    painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                      metrics.elidedText(index.data(ImportHistoryModel::kCountsRole).toString(),
                                         Qt::ElideRight, textWidth));

    QStyleOptionButton style;
    style.rect = button;
    style.text = kUndoImport;
    style.palette = palette;
    style.fontMetrics = metrics;
    style.state = QStyle::State_Enabled | QStyle::State_Raised;
    const QWidget* widget = option.widget;
    (widget ? widget->style() : QApplication::style())
        ->drawControl(QStyle::CE_PushButton, &style, painter, widget);
    painter->restore();
}

bool ImportHistoryDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                        const QStyleOptionViewItem& option,
                                        const QModelIndex& index) {
    if (event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton &&
            buttonRect(option.rect, option.fontMetrics).contains(mouse->position().toPoint())) {
            Q_EMIT undoClicked(index);
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

void ImportHistoryView::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if ((key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) &&
        currentIndex().isValid()) {
        Q_EMIT undoRequested(currentIndex());
        return;
    }
    QListView::keyPressEvent(event);
}

RecentImportsSection::RecentImportsSection(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Import history"), {}, {}, parent),
      m_bridge(bridge),
      m_model(new ImportHistoryModel(bridge.runtime(), this)),
      m_view(new ImportHistoryView(this)),
      m_empty(secondaryLabel(toQString(kNothingImportedYet), this)) {
    QVBoxLayout* layout = body();
    layout->addWidget(m_empty);

    auto* delegate = new ImportHistoryDelegate(m_view);
    m_view->setModel(m_model);
    m_view->setItemDelegate(delegate);
    m_view->setAccessibleName(titleLabel()->text());
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setUniformItemSizes(true);
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // The list sits on its card's surface rather than a field of its own.
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->viewport()->setAutoFillBackground(false);
    layout->addWidget(m_view);

    connect(delegate, &ImportHistoryDelegate::undoClicked, this,
            [this](const QModelIndex& index) { askToUndo(index.row()); });
    connect(m_view, &ImportHistoryView::undoRequested, this,
            [this](const QModelIndex& index) { askToUndo(index.row()); });
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, [this](const SavedChange& change) {
        m_model->follow(change);
        refresh();
    });
    refresh();
}

void RecentImportsSection::refresh() {
    const int rows = m_model->rowCount();
    m_empty->setVisible(rows == 0);
    m_view->setVisible(rows > 0);
    if (rows > 0)
        fitToRows(m_view, rows, kVisibleRows);
}

void RecentImportsSection::askToUndo(int row) {
    if (row < 0 || row >= m_model->rowCount() || m_confirmation)
        return;
    const ImportBatch batch = m_model->batch(row);
    auto* box = new QMessageBox(window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(QStringLiteral("Undo this import?"));
    box->setText(QStringLiteral("Undo this import?"));
    box->setInformativeText(
        QStringLiteral("Everything imported from %1 is removed, including any changes you made "
                       "to those transactions. Pending charges it replaced come back.")
            .arg(toQString(batch.fileName)));
    QPushButton* remove = box->addButton(
        QStringLiteral("Remove %1 transactions").arg(transactionsAdded(batch.counts)),
        QMessageBox::DestructiveRole);
    remove->setAccessibleName(remove->text());
    QPushButton* cancel = box->addButton(QMessageBox::Cancel);
    cancel->setAccessibleName(cancel->text());
    // A slip of the Enter key mustn't take an import away.
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    connect(box, &QMessageBox::buttonClicked, this, [this, remove, batch](QAbstractButton* button) {
        if (button == remove)
            undo(batch);
    });
    m_confirmation = box;
    box->open();
}

void RecentImportsSection::undo(const ImportBatch& batch) {
    LedgerRuntime& runtime = m_bridge.runtime();
    const Uuid id = batch.id;
    // Set where the change is worked out, read once it is saved.
    auto gone = std::make_shared<bool>(false);
    runtime.applyForScreen(
        [id, gone](Ledger& ledger) -> std::optional<LedgerDelta> {
            // Another program may have taken the import back meanwhile.
            const auto& batches = ledger.batches;
            *gone = std::none_of(batches.begin(), batches.end(),
                                 [&](const ImportBatch& kept) { return kept.id == id; });
            if (*gone)
                return std::nullopt;
            return undoImport(ledger, id);
        },
        [&runtime, gone, fileName = batch.fileName](const ApplyResult& result) {
            if (result.saved && !*gone)
                runtime.setStatusMessage(removedImportMessage(fileName));
        });
}

}  // namespace copperwick::app

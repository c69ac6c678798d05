#include "app/transactions/transaction_inspector.h"

#include <map>
#include <utility>

#include <QApplication>
#include <QFrame>
#include <QGridLayout>

#include "app/transactions/correction_sheet.h"
#include "app/transactions/split_sheet.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/saved_change.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/operations/ai_filings.h"
#include "core/operations/classification.h"
#include "core/operations/household_assignment.h"
#include "core/operations/manual_entry.h"
#include "core/reports/report_engine.h"
#include "runtime/instant_text.h"

namespace copperwick::app {

namespace {

constexpr int kSectionGap = 18;

// The kinds the filing editor offers, in the words of the review card's.
constexpr TransactionKind kKinds[] = {TransactionKind::expense, TransactionKind::income,
                                      TransactionKind::transfer};

const ImportBatch* batchOf(const Ledger& ledger, const LedgerTransaction& line) {
    if (!line.batchID)
        return nullptr;
    for (const ImportBatch& batch : ledger.batches) {
        if (batch.id == *line.batchID)
            return &batch;
    }
    return nullptr;
}

}  // namespace

TransactionInspector::TransactionInspector(RuntimeBridge& bridge, TransactionActions& actions,
                                           QWidget* parent)
    : QScrollArea(parent), m_bridge(bridge), m_runtime(bridge.runtime()), m_actions(actions) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(QStringLiteral("Transaction details"));
    setFocusPolicy(Qt::NoFocus);
    rebuild();
}

void TransactionInspector::setSelection(std::vector<Uuid> ids) {
    if (ids == m_ids && m_content)
        return;
    m_ids = std::move(ids);
    rebuild();
}

void TransactionInspector::changeSaved(const SavedChange& change) {
    if (m_ids.empty())
        return;
    bool touched = touches(change, {RecordKind::merchant, RecordKind::category, RecordKind::person,
                                    RecordKind::account, RecordKind::batch});
    if (change.delta && !touched) {
        const auto changed = change.delta->changed.find(RecordKind::transaction);
        const auto deleted = change.delta->deleted.find(RecordKind::transaction);
        for (const Uuid& id : m_ids) {
            touched = touched ||
                      (changed != change.delta->changed.end() && changed->second.contains(id)) ||
                      (deleted != change.delta->deleted.end() && deleted->second.contains(id));
        }
    }
    if (touched)
        rebuild();
}

QLabel* TransactionInspector::addHeading(QVBoxLayout* layout, const QString& words) {
    layout->addSpacing(kSectionGap - layout->spacing());
    QLabel* label = headingLabel(words, m_content);
    layout->addWidget(label);
    return label;
}

QLabel* TransactionInspector::addText(QVBoxLayout* layout, const QString& words, bool quiet) {
    QLabel* label = quiet ? secondaryLabel(words, m_content) : textLabel(words, m_content);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(label);
    return label;
}

void TransactionInspector::rebuild() {
    m_merchant = nullptr;
    m_kind = nullptr;
    m_category = nullptr;
    m_remember = nullptr;
    m_filingRefusal = nullptr;
    m_saveFiling = nullptr;
    m_note = nullptr;
    m_saveNote = nullptr;
    m_correct = nullptr;
    m_split = nullptr;
    m_looksRight = nullptr;
    m_chargeQuestion = nullptr;
    // The keyboard stays on the control of the same name when the panel is
    // made again, so that a note saved with Enter doesn't lose the place.
    QString focused;
    if (QWidget* now = QApplication::focusWidget();
        now && m_content && m_content->isAncestorOf(now))
        focused = now->accessibleName();
    if (QWidget* old = takeWidget()) {
        old->hide();
        old->deleteLater();
    }
    m_content = new QWidget;
    m_content->setBackgroundRole(QPalette::Base);
    auto* layout = new QVBoxLayout(m_content);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->setSpacing(6);

    std::vector<Uuid> present;
    for (const Uuid& id : m_ids) {
        if (m_runtime.ledger().transaction(id))
            present.push_back(id);
    }
    m_ids = std::move(present);
    if (m_ids.empty())
        buildNone(layout);
    else if (m_ids.size() > 1)
        buildSeveral(layout);
    else
        buildOne(layout, *m_runtime.ledger().transaction(m_ids.front()));
    layout->addStretch(1);
    setWidget(m_content);
    if (focused.isEmpty())
        return;
    for (QWidget* control : m_content->findChildren<QWidget*>()) {
        if (control->accessibleName() == focused && (control->focusPolicy() & Qt::TabFocus)) {
            control->setFocus(Qt::OtherFocusReason);
            break;
        }
    }
}

void TransactionInspector::buildNone(QVBoxLayout* layout) {
    layout->addWidget(headingLabel(QStringLiteral("No selection"), m_content, 1.15));
    addText(layout,
            QStringLiteral(
                "Select a transaction to see where it came from and why it was filed that way."),
            true);
}

void TransactionInspector::buildSeveral(QVBoxLayout* layout) {
    const Ledger& ledger = m_runtime.ledger();
    layout->addWidget(
        headingLabel(QString::number(m_ids.size()) + QStringLiteral(" selected"), m_content, 1.15));
    // Amounts in different currencies aren't added together: each has its sum.
    std::map<std::string, int64_t> sums;
    for (const Uuid& id : m_ids) {
        const LedgerTransaction* line = ledger.transaction(id);
        sums[line->currency] += line->amount;
    }
    addHeading(layout, QStringLiteral("Total"));
    for (const auto& [currency, sum] : sums)
        addText(layout, toQString(Money::format(sum, currency)));
    addText(layout, QStringLiteral("Use the actions below, or right-click in the table."), true);
    layout->addSpacing(kSectionGap);
    addActionButtons(layout, true);
}

void TransactionInspector::addActionButtons(QVBoxLayout* layout, bool withFiling) {
    const auto menuButton = [&](std::string_view words, auto fill) {
        QPushButton* button = pushButton(toQString(words), m_content);
        auto* menu = new QMenu(button);
        fill(menu);
        button->setMenu(menu);
        layout->addWidget(button);
    };
    if (withFiling) {
        menuButton(TransactionActions::kAssign,
                   [&](QMenu* menu) { m_actions.fillAssignMenu(menu, m_ids); });
        menuButton(TransactionActions::kSpendingCategory, [&](QMenu* menu) {
            m_actions.fillCategoryMenu(menu, m_ids, TransactionKind::expense);
        });
        menuButton(TransactionActions::kIncomeCategory, [&](QMenu* menu) {
            m_actions.fillCategoryMenu(menu, m_ids, TransactionKind::income);
        });
        QPushButton* transfer = pushButton(toQString(TransactionActions::kTransfer), m_content);
        connect(transfer, &QPushButton::clicked, this, [this] { m_actions.markAsTransfer(m_ids); });
        layout->addWidget(transfer);
    }
    QPushButton* automatic = pushButton(toQString(TransactionActions::kAutomatic), m_content);
    connect(automatic, &QPushButton::clicked, this, [this] { m_actions.backToAutomatic(m_ids); });
    layout->addWidget(automatic);
    if (m_actions.anyKept(m_ids)) {
        QPushButton* remove = pushButton(toQString(TransactionActions::kRemove), m_content);
        connect(remove, &QPushButton::clicked, this, [this] { m_actions.setRemoved(m_ids, true); });
        layout->addWidget(remove);
    }
    if (m_actions.anyRemoved(m_ids)) {
        QPushButton* restore = pushButton(toQString(TransactionActions::kRestore), m_content);
        connect(restore, &QPushButton::clicked, this,
                [this] { m_actions.setRemoved(m_ids, false); });
        layout->addWidget(restore);
    }
}

void TransactionInspector::buildOne(QVBoxLayout* layout, const LedgerTransaction& line) {
    const Ledger& ledger = m_runtime.ledger();
    const std::string merchant = ReportEngine::merchantIdentity(line, ledger).name;
    QLabel* title = headingLabel(toQString(merchant), m_content, 1.15);
    title->setWordWrap(true);
    layout->addWidget(title);
    addText(layout, toQString(Money::format(line.amount, line.currency)));

    // 1. The filing, with an editor like the review card's.
    addHeading(layout, QStringLiteral("Merchant and category"));
    if (line.suggestion && isWaiting(line.review)) {
        auto* banner = new QFrame(m_content);
        banner->setFrameShape(QFrame::StyledPanel);
        auto* bannerLayout = new QVBoxLayout(banner);
        bannerLayout->setContentsMargins(10, 8, 10, 8);
        bannerLayout->addWidget(
            headingLabel(toQString(suggestionHeading(*line.suggestion)), banner));
        bannerLayout->addWidget(
            textLabel(toQString(filingText(ledger, line.suggestion->merchantName,
                                           line.suggestion->categoryID, line.suggestion->kind)),
                      banner));
        if (!line.suggestion->reason.empty())
            bannerLayout->addWidget(secondaryLabel(toQString(line.suggestion->reason), banner));
        QPushButton* approve = pushButton(QStringLiteral("Approve"), banner);
        connect(approve, &QPushButton::clicked, this, &TransactionInspector::approveSuggestion);
        bannerLayout->addWidget(approve, 0, Qt::AlignLeft);
        layout->addWidget(banner);
    }
    auto* form = new QGridLayout;
    form->setHorizontalSpacing(10);
    form->setVerticalSpacing(6);
    m_merchant = new QLineEdit(m_content);
    if (const Merchant* known = ledger.merchant(line.merchantID))
        m_merchant->setText(toQString(known->name));
    m_merchant->setPlaceholderText(toQString(merchant));
    form->addWidget(fieldLabel(QStringLiteral("Merchant"), m_merchant, m_content), 0, 0);
    form->addWidget(m_merchant, 0, 1);
    m_kind = new QComboBox(m_content);
    for (const TransactionKind kind : kKinds)
        m_kind->addItem(toQString(label(kind)), static_cast<int>(kind));
    m_kind->setCurrentIndex(std::max(
        0, m_kind->findData(static_cast<int>(
               line.kind == TransactionKind::unknown ? kindForAmount(line.amount) : line.kind))));
    form->addWidget(fieldLabel(QStringLiteral("Kind"), m_kind, m_content), 1, 0);
    form->addWidget(m_kind, 1, 1);
    m_category = new QComboBox(m_content);
    form->addWidget(fieldLabel(QStringLiteral("Category"), m_category, m_content), 2, 0);
    form->addWidget(m_category, 2, 1);
    form->setColumnStretch(1, 1);
    layout->addLayout(form);
    fillCategories();
    m_category->setCurrentIndex(std::max(
        0, m_category->findData(line.categoryID ? toQString(line.categoryID->text()) : QString())));
    connect(m_kind, &QComboBox::currentIndexChanged, this, &TransactionInspector::fillCategories);
    m_filingRefusal = new RefusalLine(m_content);
    layout->addWidget(m_filingRefusal);
    m_remember = new QCheckBox(QStringLiteral("Remember for similar transactions"), m_content);
    m_remember->setAccessibleName(m_remember->text());
    layout->addWidget(m_remember);
    m_saveFiling = pushButton(QStringLiteral("Save"), m_content);
    connect(m_saveFiling, &QPushButton::clicked, this, &TransactionInspector::saveFiling);
    connect(m_merchant, &QLineEdit::returnPressed, this, &TransactionInspector::saveFiling);
    layout->addWidget(m_saveFiling, 0, Qt::AlignLeft);

    // 2. The line's own facts.
    addHeading(layout, QStringLiteral("Transaction details"));
    const Account* account = ledger.account(line.accountID);
    addText(layout, toQString(DateText::medium(line.date)));
    addText(layout, toQString(Money::format(line.amount, line.currency)));
    if (account)
        addText(layout, toQString(account->name));
    if (line.status == TransactionStatus::pending)
        addText(layout, QStringLiteral("pending, not counted yet"), true);
    else
        addText(layout,
                QStringLiteral("posted ") +
                    toQString(DateText::medium(line.postedDate.value_or(line.date))),
                true);
    addText(layout, toQString(label(line.kind)));
    auto* assignRow = new QHBoxLayout;
    QPushButton* assign =
        pushButton(toQString(assignmentName(ledger, assignment(ledger, line))), m_content);
    auto* assignMenu = new QMenu(assign);
    m_actions.fillAssignMenu(assignMenu, m_ids);
    assign->setMenu(assignMenu);
    assignRow->addWidget(textLabel(QStringLiteral("Assign spending to"), m_content));
    assignRow->addWidget(assign);
    assignRow->addStretch(1);
    layout->addLayout(assignRow);
    if (const std::vector<std::string> users = cardUserNames(ledger, line);
        line.cardIdentifier && !users.empty()) {
        std::string names;
        for (const std::string& name : users)
            names += (names.empty() ? "" : ", ") + name;
        addText(layout, QStringLiteral("Card used by ") + toQString(names), true);
    }
    if (const LedgerTransaction* other = ledger.transaction(line.transferPairID)) {
        const Account* otherAccount = ledger.account(other->accountID);
        addText(layout,
                QStringLiteral("Other side: ") + toQString(other->rawDescription) +
                    (otherAccount ? QStringLiteral(" \u00B7 ") + toQString(otherAccount->name)
                                  : QString()),
                true);
    }

    // 3. Why the line is filed as it is.
    addHeading(layout, QStringLiteral("Why it's filed this way"));
    addText(layout,
            line.evidence.empty() ? QStringLiteral("Not matched yet.") : toQString(line.evidence),
            true);
    if (line.isAIFiledUnchecked()) {
        m_looksRight = pushButton(QStringLiteral("Looks Right"), m_content);
        connect(m_looksRight, &QPushButton::clicked, this, &TransactionInspector::looksRight);
        layout->addWidget(m_looksRight, 0, Qt::AlignLeft);
        addText(
            layout,
            QStringLiteral("Keeps this filing and teaches Copperwick. To change it, edit above."),
            true);
    }

    // 4. What Local AI makes of the bank's text.
    layout->addSpacing(kSectionGap - layout->spacing());
    m_chargeQuestion = new ChargeQuestion(m_bridge, line.id, m_content);
    layout->addWidget(m_chargeQuestion);

    // 5. Where the line came from.
    addHeading(layout, QStringLiteral("Source"));
    addText(layout, QStringLiteral("Original"), true);
    addText(layout, toQString(line.originalDetails ? line.originalDetails->description
                                                   : line.rawDescription));
    if (const ImportBatch* batch = batchOf(ledger, line)) {
        addText(layout,
                toQString(batch->fileName) + QStringLiteral(", line ") +
                    QString::number(line.sourceLine) + QStringLiteral(", imported ") +
                    toQString(abbreviatedDateTime(batch->importedAt)),
                true);
    }
    addText(
        layout,
        line.isManualEntry() ? QStringLiteral("Manual source") : QStringLiteral("From your bank"),
        true);
    if (line.bankCategory)
        addText(layout, QStringLiteral("Bank's category: ") + toQString(*line.bankCategory), true);

    // 6. The note.
    addHeading(layout, QStringLiteral("Note"));
    m_note = new QLineEdit(toQString(line.note), m_content);
    m_note->setPlaceholderText(QStringLiteral("Add a note"));
    m_note->setAccessibleName(QStringLiteral("Add a note"));
    layout->addWidget(m_note);
    m_saveNote = pushButton(QStringLiteral("Save Note"), m_content);
    connect(m_saveNote, &QPushButton::clicked, this, &TransactionInspector::saveNote);
    connect(m_note, &QLineEdit::returnPressed, this, &TransactionInspector::saveNote);
    layout->addWidget(m_saveNote, 0, Qt::AlignLeft);

    // 7. Corrections and splits.
    layout->addSpacing(kSectionGap);
    m_correct = pushButton(QStringLiteral("Correct Date, Amount or Description\u2026"), m_content);
    connect(m_correct, &QPushButton::clicked, this, &TransactionInspector::openCorrection);
    layout->addWidget(m_correct, 0, Qt::AlignLeft);
    if (line.transferPairID) {
        m_correct->setEnabled(false);
        addText(layout,
                QStringLiteral("Linked transfers keep their dates and amounts together. Remove the "
                               "link by changing the filing before correcting."),
                true);
    }
    m_split = pushButton(line.splits ? QStringLiteral("Edit Split\u2026")
                                     : QStringLiteral("Split Between Categories\u2026"),
                         m_content);
    connect(m_split, &QPushButton::clicked, this, &TransactionInspector::openSplit);
    m_split->setEnabled(line.isActive() && line.kind == TransactionKind::expense &&
                        line.status == TransactionStatus::posted && !line.transferPairID);
    layout->addWidget(m_split, 0, Qt::AlignLeft);

    // 8. Back to the matcher, or out of the records.
    layout->addSpacing(kSectionGap);
    addActionButtons(layout, false);
}

void TransactionInspector::fillCategories() {
    if (!m_kind || !m_category)
        return;
    const auto kind = static_cast<TransactionKind>(m_kind->currentData().toInt());
    const QVariant chosen = m_category->currentData();
    m_category->clear();
    m_category->addItem(QStringLiteral("Choose"));
    m_category->setEnabled(kind != TransactionKind::transfer);
    if (kind == TransactionKind::transfer)
        return;
    const CategoryGroup group =
        kind == TransactionKind::income ? CategoryGroup::income : CategoryGroup::expense;
    for (const LedgerCategory& category : m_runtime.ledger().categories) {
        if (category.group == group)
            m_category->addItem(toQString(category.name), toQString(category.id.text()));
    }
    m_category->setCurrentIndex(std::max(0, m_category->findData(chosen)));
}

void TransactionInspector::saveFiling() {
    if (m_ids.size() != 1 || !m_kind)
        return;
    const auto kind = static_cast<TransactionKind>(m_kind->currentData().toInt());
    Classification decision{
        .ids = m_ids,
        .merchantName = toStdString(m_merchant->text().trimmed()),
        .kind = kind,
        .categoryID = Uuid::parse(toStdString(m_category->currentData().toString())),
        .remember = m_remember->isChecked(),
        .label = kind == TransactionKind::transfer ? "Mark as transfer" : "Set category"};
    try {
        checkClassification(m_runtime.ledger(), decision);
    } catch (const EntryError& error) {
        m_filingRefusal->setRefusal(QString::fromUtf8(error.what()));
        return;
    }
    m_filingRefusal->setRefusal({});
    const Instant now = m_runtime.now();
    m_runtime.applyForScreen(
        [decision = std::move(decision), now](Ledger& ledger) -> std::optional<LedgerDelta> {
            return classify(ledger, decision, now);
        },
        [](const ApplyResult&) {});
}

void TransactionInspector::approveSuggestion() {
    if (m_ids.size() != 1)
        return;
    const Instant now = m_runtime.now();
    m_runtime.applyForScreen(
        [ids = m_ids, remember = m_remember && m_remember->isChecked(),
         now](Ledger& ledger) -> std::optional<LedgerDelta> {
            return approveSuggestions(ledger, ids, remember, now);
        },
        [](const ApplyResult&) {});
}

void TransactionInspector::looksRight() {
    if (m_ids.size() != 1)
        return;
    const Instant now = m_runtime.now();
    m_runtime.applyForScreen(
        [ids = m_ids, now](Ledger& ledger) -> std::optional<LedgerDelta> {
            return confirmAIFiled(ledger, ids, now);
        },
        [](const ApplyResult&) {});
}

void TransactionInspector::saveNote() {
    if (m_ids.size() != 1 || !m_note)
        return;
    const Instant now = m_runtime.now();
    (void)m_runtime.apply([id = m_ids.front(), note = toStdString(m_note->text()),
                           now](Ledger& ledger) { return setNote(ledger, note, id, now); });
}

void TransactionInspector::openCorrection() {
    if (m_ids.size() != 1)
        return;
    auto* sheet = new CorrectionSheet(m_runtime, m_ids.front(), window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void TransactionInspector::openSplit() {
    if (m_ids.size() != 1)
        return;
    auto* sheet = new SplitSheet(m_runtime, m_ids.front(), window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

QPushButton* TransactionInspector::button(const QString& words) const {
    if (!m_content)
        return nullptr;
    for (QPushButton* candidate : m_content->findChildren<QPushButton*>()) {
        if (candidate->text() == words)
            return candidate;
    }
    return nullptr;
}

QString TransactionInspector::shownText() const {
    QStringList words;
    if (!m_content)
        return {};
    for (QLabel* label : m_content->findChildren<QLabel*>()) {
        if (!label->isHidden() && !label->text().isEmpty())
            words.append(label->text());
    }
    return words.join(QLatin1Char('\n'));
}

}  // namespace copperwick::app

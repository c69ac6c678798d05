#include "app/rules/rules_page.h"

#include <algorithm>
#include <set>

#include <QEventLoop>
#include <QHBoxLayout>
#include <QPointer>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

#include "app/rules/row_delegates.h"
#include "app/shell/sections.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/saved_change.h"
#include "app/widgets/section_card.h"
#include "app/widgets/text_styles.h"
#include "core/matching/builtin_knowledge.h"
#include "core/matching/merchant_text.h"
#include "core/operations/merchants.h"
#include "core/operations/rules.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kIntro =
    "Your rules run first, top to bottom, and the first match wins. Then merchants you've taught "
    "Copperwick, then the built-in rules and merchant list.";
constexpr std::string_view kRulesNote = "Rules never change transactions you set by hand.";
constexpr std::string_view kNoRulesText =
    "No rules yet. Make one here, or approve a suggested rule in Review. Corrections with "
    "\u201CRemember\u201D also teach Copperwick without a rule.";
constexpr std::string_view kBuiltInText =
    "Generic bank wording Copperwick understands. Turn one off if it doesn't fit how you bank.";
constexpr std::string_view kNoMerchantsText =
    "Merchants appear here as you import and review transactions.";

// The most rows a list shows before it scrolls within the page.
constexpr int kVisibleRules = 8;
constexpr int kVisibleMerchants = 9;

QListView* listView(const QString& name, QWidget* parent) {
    auto* view = new QListView(parent);
    view->setAccessibleName(name);
    view->setFrameShape(QFrame::NoFrame);
    view->setUniformItemSizes(true);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    // The list sits on its card's surface rather than a field of its own.
    view->viewport()->setAutoFillBackground(false);
    view->setAutoFillBackground(false);
    return view;
}

// As tall as its rows, up to `most` of them, then it scrolls; hidden while
// it has none, when the card's own words stand in its place.
void fitWhenRowsChange(QListView* view, int most) {
    QAbstractItemModel* model = view->model();
    const auto fit = [view, most] {
        const int rows = view->model()->rowCount();
        fitToRows(view, rows, most);
        view->setVisible(rows > 0);
    };
    QObject::connect(model, &QAbstractItemModel::rowsInserted, view, fit);
    QObject::connect(model, &QAbstractItemModel::rowsRemoved, view, fit);
    QObject::connect(model, &QAbstractItemModel::modelReset, view, fit);
    QObject::connect(model, &QAbstractItemModel::layoutChanged, view, fit);
    fit();
}

}  // namespace

RulesPage::RulesPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent),
      m_bridge(bridge),
      m_ruleModel(new RuleListModel(this)),
      m_builtInModel(new BuiltInRuleModel(this)),
      m_merchantModel(new MerchantListModel(this)),
      m_merchantProxy(new MerchantSearchProxy(this)),
      m_merchantReading(
          bridge.runtime(),
          [](const Ledger& ledger, LocalDate) { return MerchantListModel::rowsOf(ledger); },
          [this](MerchantListModel::Rows rows) { showMerchants(std::move(rows)); }) {
    m_merchantProxy->setSourceModel(m_merchantModel);
    const Ledger& ledger = m_bridge.runtime().ledger();
    m_ruleModel->refresh(ledger);
    m_builtInModel->refresh(ledger);
    // The first screen shows every merchant at once; counts that follow a
    // save may come from beside the window.
    m_merchantModel->refresh(ledger);
    m_merchantProxy->refresh(ledger);

    QVBoxLayout* column =
        makeScrollingColumn(toQString(sectionInfo(AppSection::rules).label), toQString(kIntro));
    column->addWidget(makeRulesCard());
    column->addWidget(makeBuiltInCard());
    column->addWidget(makeMerchantsCard());
    column->addStretch(1);

    connect(&m_bridge, &RuntimeBridge::changeSaved, this, &RulesPage::changeSaved);
    refreshRules();
    refreshMerchants();
}

QWidget* RulesPage::makeRulesCard() {
    auto* card = new SectionCard(QStringLiteral("Your rules"));
    QVBoxLayout* layout = card->body();
    m_moveUp = card->addTitleButton(QStringLiteral("Move Up"));
    m_moveUp->setToolTip(QStringLiteral("Alt+Up"));
    m_moveDown = card->addTitleButton(QStringLiteral("Move Down"));
    m_moveDown->setToolTip(QStringLiteral("Alt+Down"));
    m_newRule = card->addTitleButton(QStringLiteral("New Rule"));

    m_ruleList = listView(QStringLiteral("Your rules"), card);
    m_ruleList->setModel(m_ruleModel);
    auto* delegate = new SwitchRowDelegate(true, m_ruleList);
    m_ruleList->setItemDelegate(delegate);
    m_ruleList->setDragEnabled(true);
    m_ruleList->setAcceptDrops(true);
    m_ruleList->setDropIndicatorShown(true);
    m_ruleList->setDragDropMode(QAbstractItemView::InternalMove);
    m_ruleList->setDefaultDropAction(Qt::MoveAction);
    layout->addWidget(m_ruleList);
    fitWhenRowsChange(m_ruleList, kVisibleRules);

    m_noRules = noteLabel(toQString(kNoRulesText), card);
    layout->addWidget(m_noRules);
    layout->addWidget(noteLabel(toQString(kRulesNote), card));

    connect(m_newRule, &QPushButton::clicked, this, [this] { openRuleEditor(); });
    connect(m_moveUp, &QPushButton::clicked, this, [this] { moveCurrentRule(-1); });
    connect(m_moveDown, &QPushButton::clicked, this, [this] { moveCurrentRule(1); });
    for (const auto& [key, step] :
         {std::pair{Qt::ALT | Qt::Key_Up, -1}, std::pair{Qt::ALT | Qt::Key_Down, 1}}) {
        auto* shortcut = new QShortcut(QKeySequence(key), m_ruleList);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this, step] { moveCurrentRule(step); });
    }
    connect(delegate, &SwitchRowDelegate::editRequested, this, &RulesPage::editRule);
    connect(m_ruleList, &QListView::activated, this, &RulesPage::editRule);
    connect(m_ruleList->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &RulesPage::updateMoveButtons);
    connect(m_ruleModel, &RuleListModel::orderRequested, this, &RulesPage::applyOrder);
    connect(m_ruleModel, &RuleListModel::switchRequested, this, &RulesPage::applyRuleSwitch);
    return card;
}

QWidget* RulesPage::makeBuiltInCard() {
    auto* card = new SectionCard(QStringLiteral("Built-in rules"), toQString(kBuiltInText));
    QVBoxLayout* layout = card->body();
    m_builtInList = listView(QStringLiteral("Built-in rules"), card);
    m_builtInList->setModel(m_builtInModel);
    m_builtInList->setItemDelegate(new SwitchRowDelegate(false, m_builtInList));
    layout->addWidget(m_builtInList);
    fitWhenRowsChange(m_builtInList, m_builtInModel->rowCount());
    layout->addWidget(noteLabel(toQString(BuiltInKnowledge::directoryText()), card));
    connect(m_builtInModel, &BuiltInRuleModel::switchRequested, this,
            &RulesPage::applyBuiltInSwitch);
    return card;
}

QWidget* RulesPage::makeMerchantsCard() {
    auto* card = new SectionCard(QStringLiteral("Merchants"));
    QVBoxLayout* layout = card->body();
    m_removeUnused = card->addTitleButton(QStringLiteral("Remove Unused Merchants"));

    m_merchantSearch = new QLineEdit(card);
    m_merchantSearch->setPlaceholderText(QStringLiteral("Search merchants"));
    m_merchantSearch->setAccessibleName(m_merchantSearch->placeholderText());
    m_merchantSearch->setClearButtonEnabled(true);
    layout->addWidget(m_merchantSearch);

    m_merchantList = listView(QStringLiteral("Merchants"), card);
    m_merchantList->setModel(m_merchantProxy);
    auto* delegate = new MerchantRowDelegate(m_merchantList);
    m_merchantList->setItemDelegate(delegate);
    layout->addWidget(m_merchantList);
    fitWhenRowsChange(m_merchantList, kVisibleMerchants);
    m_noMerchants = noteLabel(toQString(kNoMerchantsText), card);
    layout->addWidget(m_noMerchants);

    connect(m_merchantSearch, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_merchantProxy->setSearch(m_bridge.runtime().ledger(), text);
    });
    connect(m_removeUnused, &QPushButton::clicked, this, &RulesPage::removeUnusedMerchants);
    connect(delegate, &MerchantRowDelegate::editRequested, this, &RulesPage::editMerchant);
    connect(m_merchantList, &QListView::activated, this, &RulesPage::editMerchant);
    return card;
}

void RulesPage::refreshRows() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    m_ruleModel->refresh(ledger);
    m_builtInModel->refresh(ledger);
    refreshRules();
    m_merchantReading.start();
}

void RulesPage::changeSaved(const SavedChange& change) {
    const Ledger& ledger = m_bridge.runtime().ledger();
    if (!change.delta) {
        refreshRows();
        return;
    }
    // A rule's row names its accounts and category; a merchant's its category.
    const bool names = touches(change, {RecordKind::account, RecordKind::category});
    if (names || touches(change, {RecordKind::rule, RecordKind::settings})) {
        m_ruleModel->refresh(ledger);
        m_builtInModel->refresh(ledger);
        refreshRules();
    }
    if (names || touches(change, {RecordKind::merchant, RecordKind::transaction}))
        m_merchantReading.start();
}

void RulesPage::showMerchants(MerchantListModel::Rows rows) {
    m_merchantModel->install(std::move(rows));
    refreshMerchants();
}

void RulesPage::refreshRules() {
    m_noRules->setVisible(m_ruleModel->rowCount() == 0);
    updateMoveButtons();
}

void RulesPage::refreshMerchants() {
    m_merchantProxy->refresh(m_bridge.runtime().ledger());
    const bool none = m_merchantModel->rowCount() == 0;
    m_noMerchants->setVisible(none);
    m_merchantSearch->setVisible(!none);
}

void RulesPage::updateMoveButtons() {
    const int row = m_ruleList->currentIndex().isValid() ? m_ruleList->currentIndex().row() : -1;
    m_moveUp->setEnabled(row > 0);
    m_moveDown->setEnabled(row >= 0 && row + 1 < m_ruleModel->rowCount());
    const bool any = m_ruleModel->rowCount() > 1;
    m_moveUp->setVisible(any);
    m_moveDown->setVisible(any);
}

void RulesPage::moveCurrentRule(int step) {
    const QModelIndex current = m_ruleList->currentIndex();
    if (!current.isValid())
        return;
    // The keyboard stays where the button was, or on the list.
    QWidget* focused = focusWidget();
    m_ruleModel->moveRule(current.row(), step);
    updateMoveButtons();
    if (focused && !focused->isEnabled())
        m_ruleList->setFocus();
}

void RulesPage::applyOrder(const std::vector<Uuid>& ids) {
    applyKeepingRows([ids](Ledger& copy) { return setRuleOrder(copy, ids, true); });
}

void RulesPage::applyRuleSwitch(const Uuid& id, bool enabled) {
    const auto& rules = m_bridge.runtime().ledger().rules;
    const auto found =
        std::find_if(rules.begin(), rules.end(), [&](const Rule& rule) { return rule.id == id; });
    if (found == rules.end())
        return;
    Rule rule = *found;
    rule.isEnabled = enabled;
    applyKeepingRows([rule](Ledger& copy) { return updateRule(copy, rule, true); });
}

void RulesPage::applyBuiltInSwitch(const std::string& id, bool enabled) {
    applyKeepingRows([id, enabled](Ledger& copy) { return setBuiltInRule(copy, id, enabled); });
}

void RulesPage::removeUnusedMerchants() {
    applyKeepingRows([](Ledger& copy) { return pruneUnusedMerchants(copy); });
}

void RulesPage::applyKeepingRows(LedgerRuntime::PossibleChange change) {
    m_bridge.runtime().applyForScreen(
        std::move(change),
        [page = QPointer<RulesPage>(this)](const ApplyResult& result) {
            // A row moved or a switch flipped shows the change before it is
            // saved; when it wasn't, put the rows back as the ledger has them.
            if (page && result.message)
                page->refreshRows();
        },
        m_saveInBackgroundFrom);
}

void RulesPage::editRule(const QModelIndex& index) {
    if (const Rule* rule = m_ruleModel->rule(index.row()))
        openRuleEditor(*rule);
}

void RulesPage::editMerchant(const QModelIndex& index) {
    if (const auto id =
            Uuid::parse(toStdString(index.data(MerchantListModel::MerchantIDRole).toString())))
        openMerchantEditor(*id);
}

RuleEditorSheet* RulesPage::openRuleEditor(std::optional<Rule> draft) {
    if (openSheet())
        return nullptr;
    auto* sheet = new RuleEditorSheet(m_bridge, std::move(draft), this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    m_sheet = sheet;
    sheet->open();
    return sheet;
}

MerchantEditorSheet* RulesPage::openMerchantEditor(const Uuid& merchantID) {
    if (openSheet() || !m_bridge.runtime().ledger().merchant(merchantID))
        return nullptr;
    auto* sheet = new MerchantEditorSheet(m_bridge, merchantID, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    m_sheet = sheet;
    sheet->open();
    return sheet;
}

std::vector<SelfCheck> RulesPage::selfChecks() {
    return {{"rule editor", [this] { return checkRuleRoundTrip(); }}};
}

SelfCheckOutcome RulesPage::checkRuleRoundTrip() {
    LedgerRuntime& runtime = m_bridge.runtime();
    // A bank text of the demo's that nothing files yet.
    constexpr std::string_view kPattern = "DEMO COFFEE";
    const LedgerCategory* dining = runtime.ledger().categoryNamed("Dining");
    if (!dining)
        return {false, "The demo has no category called Dining."};
    const Uuid diningID = dining->id;

    RuleEditorSheet* sheet = openRuleEditor();
    if (!sheet)
        return {false, "The rule editor didn't open."};
    sheet->patternField()->setText(toQString(kPattern));
    sheet->outcomeField()->setCurrentIndex(
        sheet->outcomeField()->findData(static_cast<int>(TransactionKind::expense)));
    sheet->categoryField()->setCurrentIndex(
        sheet->categoryField()->findData(toQString(diningID.text())));
    if (sheet->isPreviewPending()) {
        QEventLoop wait;
        QTimer::singleShot(10'000, &wait, &QEventLoop::quit);
        connect(sheet, &RuleEditorSheet::previewShown, &wait, &QEventLoop::quit);
        wait.exec();
    }
    if (!sheet->shownPreview()) {
        sheet->reject();
        return {false, "The rule editor showed no preview within 10 seconds."};
    }
    const RulePreview preview = *sheet->shownPreview();
    const Uuid ruleID = sheet->editedRule().id;
    if (!sheet->saveButton()->isEnabled()) {
        sheet->reject();
        return {false, "The rule editor wouldn't add the rule."};
    }
    sheet->saveButton()->click();

    const Ledger& added = runtime.ledger();
    const auto& rules = added.rules;
    const auto saved = std::find_if(rules.begin(), rules.end(),
                                    [&](const Rule& rule) { return rule.id == ruleID; });
    if (saved == rules.end())
        return {false, "Add Rule didn't save the rule."};
    std::size_t filed = 0;
    for (const auto& transaction : added.transactions) {
        if (!transaction.isActive() ||
            MerchantText::normalize(transaction.rawDescription).find(kPattern) == std::string::npos)
            continue;
        if (transaction.review != ReviewState::confirmed && transaction.categoryID == diningID &&
            transaction.method == MatchMethod::userRule)
            ++filed;
    }
    const std::size_t expected = preview.matchingIDs.size() - preview.confirmedIDs.size();
    const bool listed = m_ruleModel->rowOf(ruleID.text()) >= 0;

    RuleEditorSheet* editor = openRuleEditor(*saved);
    if (!editor)
        return {false, "The rule editor didn't open for the saved rule."};
    editor->deleteButton()->click();
    const auto& left = runtime.ledger().rules;
    const bool gone = std::none_of(left.begin(), left.end(),
                                   [&](const Rule& rule) { return rule.id == ruleID; }) &&
                      m_ruleModel->rowOf(ruleID.text()) < 0;

    const bool ok = expected > 0 && filed == expected && listed && gone;
    return {ok, "Added \u201C" + std::string(kPattern) +
                    "\u201D \u2192 Dining in the rule editor: " + preview.countsText() + " " +
                    std::to_string(filed) + " now filed by it; " +
                    (listed ? "listed" : "not listed") + "; " +
                    (gone ? "deleted again." : "still there after Delete Rule.")};
}

}  // namespace copperwick::app

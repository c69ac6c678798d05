#include "app/review/review_page.h"

#include <algorithm>
#include <set>

#include <QApplication>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QShowEvent>

#include "app/shell/sections.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/saved_change.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"
#include "core/presentation/review_text.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kSubtitle =
    "Decide what Copperwick couldn't. Identical bank text is grouped, so one decision covers "
    "every matching transaction.";

}  // namespace

ReviewSnapshot readReviewQueue(const Ledger& ledger, LocalDate today) {
    return {ReviewQueue::groups(ledger), ReviewQueue::stalePending(ledger, today),
            RuleSuggester::suggestions(ledger),
            ReviewQueue::makeGroups(ledger.aiFiledUnchecked(), ledger)};
}

ReviewPage::ReviewPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent), m_bridge(bridge), m_runtime(bridge.runtime()) {
    QVBoxLayout* layout =
        makeScrollingColumn(toQString(sectionInfo(AppSection::review).label), toQString(kSubtitle));
    QWidget* content = scrollArea()->widget();

    m_count = new QLabel(content);
    QFont countFont = m_count->font();
    countFont.setWeight(QFont::DemiBold);
    m_count->setFont(countFont);
    layout->addWidget(m_count);

    m_intelligenceBar = new IntelligenceBar(bridge, content);
    m_intelligenceBar->hide();
    layout->addWidget(m_intelligenceBar);

    m_caughtUp = buildCaughtUp(content);
    layout->addWidget(m_caughtUp);

    m_readingLabel = new QLabel(QStringLiteral("Looking through your transactions\u2026"), content);
    m_readingLabel->setForegroundRole(QPalette::PlaceholderText);
    m_readingLabel->setAccessibleName(m_readingLabel->text());
    m_readingLabel->hide();
    layout->addWidget(m_readingLabel);

    m_cardList = new QVBoxLayout;
    m_cardList->setSpacing(12);
    layout->addLayout(m_cardList);

    m_showMore = pushButton(QStringLiteral("Show More"), content);
    m_showMore->hide();
    layout->addWidget(m_showMore, 0, Qt::AlignHCenter);

    m_aiFiled = new AIFiledSection(m_runtime, &m_merchantNames, content);
    layout->addWidget(m_aiFiled);

    m_stale = new StalePendingSection(m_runtime, content);
    layout->addWidget(m_stale);
    m_rules = new RuleSuggestionsSection(m_runtime, content);
    layout->addWidget(m_rules);
    layout->addStretch(1);

    connect(m_showMore, &QPushButton::clicked, this, &ReviewPage::showMore);
    connect(scrollArea()->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &ReviewPage::scrolled);
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, &ReviewPage::changeSaved);
    connect(&m_bridge, &RuntimeBridge::intelligenceChanged, this, &ReviewPage::intelligenceChanged);
    connect(&m_bridge, &RuntimeBridge::modelStatusChanged, this, &ReviewPage::intelligenceChanged);
    connect(m_rules, &RuleSuggestionsSection::create, this,
            [this](const RuleSuggestion& suggestion) {
                const LedgerCategory* category = m_runtime.ledger().category(suggestion.categoryID);
                openRuleEditor(
                    suggestion.makeRule(category ? std::optional(category->name) : std::nullopt));
            });

    refreshMerchantNames();
    refresh();
}

QWidget* ReviewPage::buildCaughtUp(QWidget* parent) {
    auto* panel = new QWidget(parent);
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 40, 0, 40);
    layout->setSpacing(10);
    layout->addWidget(new SymbolView("checkmark.seal.fill", 56, panel), 0, Qt::AlignHCenter);
    layout->addWidget(headingLabel(toQString(ReviewText::kAllCaughtUp), panel, 1.35), 0,
                      Qt::AlignHCenter);
    QLabel* detail = secondaryLabel(toQString(ReviewText::kAllCaughtUpDetail), panel);
    detail->setAlignment(Qt::AlignHCenter);
    layout->addWidget(detail);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addStretch(1);
    QPushButton* reports = pushButton(QStringLiteral("View Reports"), panel);
    QPushButton* import = pushButton(QStringLiteral("Import Files"), panel);
    buttons->addWidget(reports);
    buttons->addWidget(import);
    buttons->addStretch(1);
    layout->addSpacing(6);
    layout->addLayout(buttons);
    connect(reports, &QPushButton::clicked, this,
            [this] { m_runtime.setSection(AppSection::reports); });
    connect(import, &QPushButton::clicked, this,
            [this] { m_runtime.setSection(AppSection::importFiles); });
    panel->hide();
    return panel;
}

void ReviewPage::showEvent(QShowEvent* event) {
    SectionPage::showEvent(event);
    if (m_outdated)
        refresh();
    // Whether Local AI's buttons can be offered is asked anew on each visit.
    m_bridge.checkModel();
}

void ReviewPage::intelligenceChanged() {
    m_intelligenceBar->setVisible(!groups().empty() || m_bridge.intelligence().isSuggesting());
    m_intelligenceBar->refresh();
    for (auto& [id, card] : m_cards)
        card->refreshIntelligence();
    orderTabs({scrollArea()});
}

void ReviewPage::changeSaved(const SavedChange& change) {
    // The records the queue, the pending list and the suggested rules are read from.
    if (!touches(change,
                 {RecordKind::transaction, RecordKind::merchant, RecordKind::category,
                  RecordKind::account, RecordKind::batch, RecordKind::rule, RecordKind::settings}))
        return;
    if (touches(change, {RecordKind::merchant, RecordKind::category})) {
        m_choicesOutdated = true;
        refreshMerchantNames();
    }
    // A hidden page reads the queue when it shows, not on every save.
    if (!isVisible()) {
        m_outdated = true;
        return;
    }
    refresh();
}

void ReviewPage::refresh() {
    m_outdated = false;
    const Ledger& ledger = m_runtime.ledger();
    const LocalDate today = m_runtime.today();
    const uint64_t number = ++m_readingNumber;
    if (ledger.transactions.size() < m_readInBackgroundFrom) {
        m_reading = false;
        m_readingLabel->hide();
        install(readReviewQueue(ledger, today), std::exchange(m_choicesOutdated, false));
        return;
    }
    if (!m_work)
        m_work = std::make_unique<BackgroundWork>(m_runtime.mainQueue());
    m_reading = true;
    // What is on screen stays until the new reading is back; only the first
    // reading has nothing to show meanwhile.
    m_readingLabel->setVisible(m_snapshot.groups.empty());
    m_work->run([copy = ledger, today] { return readReviewQueue(copy, today); },
                [this, number](WorkResult<ReviewSnapshot> result) {
                    // A later reading is on its way; this one is already stale.
                    if (number != m_readingNumber)
                        return;
                    m_reading = false;
                    m_readingLabel->hide();
                    if (result.value)
                        install(std::move(*result.value), std::exchange(m_choicesOutdated, false));
                    else
                        m_runtime.setErrorMessage(result.error);
                });
}

void ReviewPage::install(ReviewSnapshot snapshot, bool choicesChanged) {
    m_snapshot = std::move(snapshot);
    const bool caughtUp = m_snapshot.groups.empty();
    m_caughtUp->setVisible(caughtUp);
    m_count->setVisible(!caughtUp);
    const QString count = caughtUp ? QString() : toQString(ReviewText::waitingCount(groups()));
    m_count->setText(count);
    m_count->setAccessibleName(count);
    layoutCards(choicesChanged);
    m_aiFiled->setGroups(m_snapshot.aiFiled);
    m_stale->setTransactions(m_snapshot.stalePending);
    m_rules->setSuggestions(m_snapshot.ruleSuggestions);
    intelligenceChanged();
}

void ReviewPage::layoutCards(bool choicesChanged) {
    const auto& all = m_snapshot.groups;
    const std::size_t shown = std::min(m_limit, all.size());
    // When the card with the keyboard goes, the keyboard moves on to the
    // card that takes its place, so deciding one after another needs no mouse.
    std::optional<int> focusedPlace;
    std::string focusedGroup;
    if (QWidget* focused = QApplication::focusWidget()) {
        for (int i = 0; i < m_cardList->count(); ++i) {
            auto* card = qobject_cast<ReviewGroupCard*>(m_cardList->itemAt(i)->widget());
            if (card && (card == focused || card->isAncestorOf(focused))) {
                focusedPlace = i;
                focusedGroup = card->group().id;
            }
        }
    }
    std::set<std::string> kept;
    for (std::size_t i = 0; i < shown; ++i) {
        const ReviewGroup& group = all[i];
        kept.insert(group.id);
        ReviewGroupCard*& card = m_cards[group.id];
        if (!card) {
            card = new ReviewGroupCard(m_runtime, group, true, &m_merchantNames);
            card->setIntelligence(&m_bridge.intelligence());
            connect(card, &ReviewGroupCard::saved, this, &ReviewPage::groupDecided);
        } else {
            card->setGroup(group);
            if (choicesChanged)
                card->refreshChoices();
        }
        const int index = static_cast<int>(i);
        if (m_cardList->indexOf(card) != index) {
            m_cardList->removeWidget(card);
            m_cardList->insertWidget(index, card);
        }
        card->show();
    }
    for (auto it = m_cards.begin(); it != m_cards.end();) {
        if (kept.contains(it->first)) {
            ++it;
            continue;
        }
        // Later, not now: the card's own Save may be what brought us here.
        m_cardList->removeWidget(it->second);
        it->second->hide();
        it->second->deleteLater();
        it = m_cards.erase(it);
    }
    m_showMore->setVisible(shown < all.size());

    if (focusedPlace && !kept.contains(focusedGroup)) {
        const auto shownCards = cards();
        if (!shownCards.empty())
            shownCards[std::min<std::size_t>(*focusedPlace, shownCards.size() - 1)]->focusEditor();
    }
}

void ReviewPage::groupDecided(const std::string& groupID) {
    auto& groups = m_snapshot.groups;
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [&](const ReviewGroup& group) { return group.id == groupID; });
    if (found == groups.end())
        return;
    groups.erase(found);
    install(std::move(m_snapshot), false);
}

void ReviewPage::showMore() {
    if (m_limit >= m_snapshot.groups.size())
        return;
    m_limit += kCardsAtOnce;
    layoutCards(false);
    orderTabs({scrollArea()});
}

void ReviewPage::scrolled(int value) {
    // Near the end of what is made, the next batch is made before the
    // person reaches it.
    const QScrollBar* bar = scrollArea()->verticalScrollBar();
    if (m_showMore->isVisible() && value >= bar->maximum() - scrollArea()->viewport()->height() / 2)
        showMore();
}

void ReviewPage::refreshMerchantNames() {
    std::set<QString> names;
    for (const Merchant& merchant : m_runtime.ledger().merchants)
        names.insert(toQString(merchant.name));
    QStringList list(names.begin(), names.end());
    list.sort(Qt::CaseInsensitive);
    if (list != m_merchantNames.stringList())
        m_merchantNames.setStringList(list);
}

std::vector<ReviewGroupCard*> ReviewPage::cards() const {
    std::vector<ReviewGroupCard*> result;
    for (int i = 0; i < m_cardList->count(); ++i) {
        if (auto* card = qobject_cast<ReviewGroupCard*>(m_cardList->itemAt(i)->widget()))
            result.push_back(card);
    }
    return result;
}

ReviewGroupCard* ReviewPage::card(const std::string& groupID) const {
    const auto found = m_cards.find(groupID);
    return found == m_cards.end() ? nullptr : found->second;
}

RuleEditorSheet* ReviewPage::openRuleEditor(Rule draft) {
    if (m_ruleEditor)
        return nullptr;
    m_ruleDraft = draft;
    auto* sheet = new RuleEditorSheet(m_bridge, std::move(draft), this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::finished, this, [this] { m_ruleDraft.reset(); });
    m_ruleEditor = sheet;
    sheet->open();
    return sheet;
}

std::vector<SelfCheck> ReviewPage::selfChecks() {
    return {{"decide a review group", [this]() -> SelfCheckOutcome {
                 refresh();
                 m_runtime.mainQueue()->runUntil([this] { return !m_reading; });
                 const auto shown = cards();
                 if (shown.empty())
                     return {false, "Nothing waits for review on the demo workspace."};
                 ReviewGroupCard* first = shown.front();
                 const ReviewGroup group = first->group();
                 if (group.suggestion) {
                     first->approveButton()->click();
                 } else {
                     if (first->categoryBox()->isEnabled() && first->categoryBox()->count() > 0 &&
                         first->categoryBox()->currentIndex() < 0)
                         first->categoryBox()->setCurrentIndex(0);
                     first->saveButton()->click();
                 }
                 const Ledger& ledger = m_runtime.ledger();
                 const bool filed = std::all_of(
                     group.transactionIDs.begin(), group.transactionIDs.end(), [&](const Uuid& id) {
                         const LedgerTransaction* line = ledger.transaction(id);
                         return line && line->review == ReviewState::confirmed;
                     });
                 if (!filed)
                     return {false, "Deciding \u201C" + group.displayName +
                                        "\u201D didn't file its transactions."};
                 if (!m_runtime.undoLastChange())
                     return {false, "Undo didn't take back the decision on \u201C" +
                                        group.displayName + "\u201D."};
                 const Ledger& after = m_runtime.ledger();
                 const bool waiting = std::all_of(
                     group.transactionIDs.begin(), group.transactionIDs.end(), [&](const Uuid& id) {
                         const LedgerTransaction* line = after.transaction(id);
                         return line && line->needsReview();
                     });
                 return {
                     waiting,
                     "Filed the " + ReviewText::transactionCount(group.transactionIDs.size()) +
                         " of \u201C" + group.displayName + "\u201D, then Undo " +
                         (waiting ? "put them back in the queue." : "left some of them filed.")};
             }}};
}

}  // namespace copperwick::app

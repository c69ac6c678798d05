#include "app/review/ai_filed_section.h"

#include <algorithm>
#include <utility>

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/operations/ai_filings.h"
#include "core/presentation/review_text.h"

namespace copperwick::app {

namespace {

// "Filed as: Zephyr Beans, Dining, Spending": how the group's first line
// stands filed now.
std::string filedAs(const Ledger& ledger, const ReviewGroup& group) {
    const LedgerTransaction* first =
        group.transactionIDs.empty() ? nullptr : ledger.transaction(group.transactionIDs.front());
    if (!first)
        return {};
    const Merchant* merchant = ledger.merchant(first->merchantID);
    return "Filed as: " +
           ReviewText::filing(ledger, merchant ? std::optional(merchant->name) : std::nullopt,
                              first->categoryID, first->kind);
}

}  // namespace

AIFiledSection::AIFiledSection(LedgerRuntime& runtime, QAbstractItemModel* merchantNames,
                               QWidget* parent)
    : SectionCard(toQString(kTitle), toQString(kDetail), "sparkles", parent),
      m_runtime(runtime),
      m_merchantNames(merchantNames) {
    m_all = addTitleButton(QStringLiteral("All Look Right"));
    connect(m_all, &QPushButton::clicked, this, &AIFiledSection::allLookRight);
    hide();
}

void AIFiledSection::setGroups(const std::vector<ReviewGroup>& groups) {
    setVisible(!groups.empty());
    if (groups == m_groups)
        return;
    m_groups = groups;
    if (m_editingID && std::none_of(m_groups.begin(), m_groups.end(),
                                    [&](const ReviewGroup& g) { return g.id == *m_editingID; }))
        m_editingID.reset();
    rebuild();
}

void AIFiledSection::rebuild() {
    m_buttons.clear();
    m_editor = nullptr;
    clearRows();
    for (const ReviewGroup& group : m_groups)
        addRow(makeRow(group));
}

QWidget* AIFiledSection::makeRow(const ReviewGroup& group) {
    auto* row = new QWidget(this);
    auto* layout = new QVBoxLayout(row);
    layout->setContentsMargins(0, 8, 0, 8);
    layout->setSpacing(8);
    if (m_editingID == group.id) {
        m_editor = new ReviewGroupCard(m_runtime, group, false, m_merchantNames, row);
        layout->addWidget(m_editor);
        QPushButton* cancel = pushButton(QStringLiteral("Cancel"), row);
        layout->addWidget(cancel, 0, Qt::AlignRight);
        connect(cancel, &QPushButton::clicked, this, &AIFiledSection::cancelChange);
        connect(m_editor, &ReviewGroupCard::saved, this, [this](const std::string& id) {
            m_editingID.reset();
            Q_EMIT groupChanged(id);
        });
        return row;
    }
    auto* line = new QHBoxLayout;
    line->setSpacing(12);
    auto* words = new QVBoxLayout;
    words->setSpacing(1);
    auto* name = new ElidedLabel(toQString(group.displayName), row);
    QFont strong = name->font();
    strong.setWeight(QFont::DemiBold);
    name->setFont(strong);
    words->addWidget(name);
    auto* example = new ElidedLabel(toQString(group.example), row);
    example->setForegroundRole(QPalette::PlaceholderText);
    words->addWidget(example);
    auto* facts =
        new ElidedLabel(toQString(ReviewText::transactionCount(group.transactionIDs.size()) +
                                  " \u00B7 " + DateText::range(group.firstDate, group.lastDate) +
                                  " \u00B7 " + Money::format(group.total)),
                        row);
    facts->setForegroundRole(QPalette::PlaceholderText);
    words->addWidget(facts);
    const std::string filing = filedAs(m_runtime.ledger(), group);
    if (!filing.empty())
        words->addWidget(new ElidedLabel(toQString(filing), row));
    line->addLayout(words, 1);
    QPushButton* looks = pushButton(QStringLiteral("Looks Right"), row);
    QPushButton* change = pushButton(QStringLiteral("Change"), row);
    // Which group a button is for, when a screen reader reads it alone.
    looks->setAccessibleDescription(toQString(group.displayName));
    change->setAccessibleDescription(toQString(group.displayName));
    line->addWidget(looks, 0, Qt::AlignVCenter);
    line->addWidget(change, 0, Qt::AlignVCenter);
    layout->addLayout(line);
    const std::string id = group.id;
    connect(looks, &QPushButton::clicked, this, [this, id] { looksRight(id); });
    connect(change, &QPushButton::clicked, this, [this, id] { this->change(id); });
    m_buttons[id] = {looks, change};
    return row;
}

void AIFiledSection::looksRight(const std::string& groupID) {
    for (const ReviewGroup& group : m_groups) {
        if (group.id == groupID)
            confirm(group.transactionIDs);
    }
}

void AIFiledSection::allLookRight() {
    std::vector<Uuid> ids;
    for (const ReviewGroup& group : m_groups)
        ids.insert(ids.end(), group.transactionIDs.begin(), group.transactionIDs.end());
    confirm(std::move(ids));
}

void AIFiledSection::confirm(std::vector<Uuid> ids) {
    if (ids.empty())
        return;
    const Instant now = m_runtime.now();
    m_runtime.applyForScreen(
        [ids = std::move(ids), now](Ledger& ledger) -> std::optional<LedgerDelta> {
            return confirmAIFiled(ledger, ids, now);
        },
        [](const ApplyResult&) {});
}

void AIFiledSection::change(const std::string& groupID) {
    m_editingID = groupID;
    rebuild();
    if (m_editor)
        m_editor->focusEditor();
}

void AIFiledSection::cancelChange() {
    const auto was = std::exchange(m_editingID, std::nullopt);
    rebuild();
    if (was) {
        if (QPushButton* button = changeButton(*was))
            button->setFocus(Qt::OtherFocusReason);
    }
}

QPushButton* AIFiledSection::looksRightButton(const std::string& groupID) const {
    const auto found = m_buttons.find(groupID);
    return found == m_buttons.end() ? nullptr : found->second.first;
}

QPushButton* AIFiledSection::changeButton(const std::string& groupID) const {
    const auto found = m_buttons.find(groupID);
    return found == m_buttons.end() ? nullptr : found->second.second;
}

}  // namespace copperwick::app

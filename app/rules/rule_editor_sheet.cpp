#include "app/rules/rule_editor_sheet.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QCompleter>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QStringList>
#include <QVBoxLayout>

#include "app/widgets/card_frame.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/text_styles.h"
#include "core/matching/matcher.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/entry_error.h"
#include "core/operations/rules.h"
#include "core/review/review_decision.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kIntro =
    "When a transaction matches, Copperwick files it this way. Rules apply to imports from now "
    "on and to everything you haven't set by hand.";

// The three outcomes the sheet offers, in its order.
constexpr std::array<TransactionKind, 3> kOutcomes{
    TransactionKind::expense, TransactionKind::income, TransactionKind::transfer};

QString trimmedText(const QLineEdit* field) {
    return toQString(text::trimmed(toStdString(field->text())));
}

template <typename Enum>
void addChoice(QComboBox* box, Enum value) {
    box->addItem(toQString(label(value)), static_cast<int>(value));
}

template <typename Enum>
Enum chosen(const QComboBox* box) {
    return static_cast<Enum>(box->currentData().toInt());
}

template <typename Enum>
void choose(QComboBox* box, Enum value) {
    box->setCurrentIndex(std::max(0, box->findData(static_cast<int>(value))));
}

std::optional<Uuid> chosenID(const QComboBox* box) {
    const QVariant data = box->currentData();
    if (!data.isValid() || data.toString().isEmpty())
        return std::nullopt;
    return Uuid::parse(toStdString(data.toString()));
}

}  // namespace

namespace {

// Whether `draft` is one of the ledger's saved rules, which the sheet then edits.
bool isSaved(const Ledger& ledger, const std::optional<Rule>& draft) {
    return draft && std::any_of(ledger.rules.begin(), ledger.rules.end(),
                                [&](const Rule& saved) { return saved.id == draft->id; });
}

}  // namespace

RuleEditorSheet::RuleEditorSheet(RuntimeBridge& bridge, std::optional<Rule> draft, QWidget* parent)
    : SheetDialog(isSaved(bridge.runtime().ledger(), draft) ? QStringLiteral("Edit rule")
                                                            : QStringLiteral("New rule"),
                  toQString(kIntro), parent),
      m_bridge(bridge),
      m_editing(isSaved(bridge.runtime().ledger(), draft)),
      m_work(bridge.runtime().mainQueue()) {
    m_draft = draft ? *draft
                    : Rule{.id = Uuid::random(),
                           .kind = TransactionKind::expense,
                           .createdAt = m_bridge.runtime().now()};
    setModal(true);
    keepAtLeastWide(560);

    makeFields();
    body()->addWidget(makePreview());
    body()->addStretch(1);
    makeButtons();

    load();

    m_previewTimer.setSingleShot(true);
    m_previewTimer.setInterval(kPreviewDelayMilliseconds);
    connect(&m_previewTimer, &QTimer::timeout, this, &RuleEditorSheet::startPreview);

    for (QLineEdit* field : {m_name, m_pattern, m_minimum, m_maximum, m_merchant})
        connect(field, &QLineEdit::textChanged, this, &RuleEditorSheet::fieldsChanged);
    for (QComboBox* field : {m_match, m_account, m_direction, m_category})
        connect(field, &QComboBox::currentIndexChanged, this, &RuleEditorSheet::fieldsChanged);
    connect(m_outcome, &QComboBox::currentIndexChanged, this, [this] {
        fillCategories();
        fieldsChanged();
    });
    // A change saved meanwhile (an import, a decision in Review) may change
    // what the rule would do.
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, [this] {
        if (isVisible())
            fieldsChanged();
    });
    // A closed sheet works nothing out, and what was on its way is dropped.
    connect(this, &QDialog::finished, this, [this] {
        m_previewTimer.stop();
        ++m_previewRequest;
    });
    fieldsChanged();
    m_pattern->setFocus();
}

RuleEditorSheet::~RuleEditorSheet() = default;

void RuleEditorSheet::makeFields() {
    QWidget* fields = this;
    QFormLayout* form = addForm();

    m_name = new QLineEdit(fields);
    m_name->setPlaceholderText(QStringLiteral("e.g. Car payment"));
    form->addRow(fieldLabel(QStringLiteral("Name"), m_name, fields), m_name);

    // The match mode and the pattern share the row of the bank text.
    auto* patternRow = new QWidget(fields);
    QHBoxLayout* patternLayout = fieldRowLayout(patternRow);
    m_match = new QComboBox(patternRow);
    for (const TextMatch match :
         {TextMatch::contains, TextMatch::startsWith, TextMatch::exact, TextMatch::regex})
        addChoice(m_match, match);
    patternLayout->addWidget(m_match);
    m_pattern = new QLineEdit(patternRow);
    m_pattern->setPlaceholderText(QStringLiteral("e.g. AUTOLOAN PAYMENT"));
    patternLayout->addWidget(m_pattern, 1);
    QLabel* bankTextLabel = fieldLabel(QStringLiteral("Bank text"), m_pattern, fields);
    // The row's one label names both: how the text is matched, and the text.
    m_match->setAccessibleName(bankTextLabel->text());
    form->addRow(bankTextLabel, withRefusalLine(patternRow, m_patternRefusal, fields));

    m_account = new QComboBox(fields);
    form->addRow(fieldLabel(QStringLiteral("Account"), m_account, fields), m_account);

    m_direction = new QComboBox(fields);
    for (const AmountDirection direction :
         {AmountDirection::any, AmountDirection::moneyIn, AmountDirection::moneyOut})
        addChoice(m_direction, direction);
    form->addRow(fieldLabel(QStringLiteral("Direction"), m_direction, fields), m_direction);

    const auto amountRow = [&](const QString& text, QLineEdit*& field, RefusalLine*& refusal) {
        field = new QLineEdit(fields);
        QLabel* label = fieldLabel(text, field, fields);
        form->addRow(label, withRefusalLine(field, refusal, fields));
    };
    amountRow(QStringLiteral("At least (optional)"), m_minimum, m_minimumRefusal);
    amountRow(QStringLiteral("At most (optional)"), m_maximum, m_maximumRefusal);

    m_merchant = new QLineEdit(fields);
    QStringList merchantNames;
    for (const auto& merchant : m_bridge.runtime().ledger().merchants)
        merchantNames.append(toQString(merchant.name));
    merchantNames.sort(Qt::CaseInsensitive);
    auto* completer = new QCompleter(merchantNames, m_merchant);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    m_merchant->setCompleter(completer);
    form->addRow(fieldLabel(QStringLiteral("Merchant (optional)"), m_merchant, fields), m_merchant);

    auto* filing = new QWidget(fields);
    QHBoxLayout* filingLayout = fieldRowLayout(filing);
    m_outcome = new QComboBox(filing);
    for (const TransactionKind outcome : kOutcomes)
        addChoice(m_outcome, outcome);
    filingLayout->addWidget(m_outcome);
    m_category = new QComboBox(filing);
    m_category->setPlaceholderText(QStringLiteral("Choose"));
    m_category->setAccessibleName(QStringLiteral("Category"));
    m_category->setMinimumContentsLength(16);
    filingLayout->addWidget(m_category, 1);
    form->addRow(fieldLabel(QStringLiteral("File as"), m_outcome, fields), filing);
}

QWidget* RuleEditorSheet::makePreview() {
    auto* preview = new CardFrame(this);
    m_previewPanel = preview;
    auto* layout = new QVBoxLayout(preview);
    layout->setContentsMargins(12, 10, 12, 10);
    layout->setSpacing(6);
    m_previewBusy = new QProgressBar(preview);
    m_previewBusy->setRange(0, 0);
    m_previewBusy->setTextVisible(false);
    m_previewBusy->setMaximumHeight(4);
    m_previewBusy->setAccessibleName(QStringLiteral("Preview"));
    m_previewBusy->hide();
    layout->addWidget(m_previewBusy);
    m_previewText = new QLabel(preview);
    m_previewText->setWordWrap(true);
    m_previewText->setTextFormat(Qt::PlainText);
    m_previewText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_previewText);
    preview->hide();
    return preview;
}

void RuleEditorSheet::makeButtons() {
    m_delete = addFootButton(QStringLiteral("Delete Rule"));
    m_delete->setVisible(m_editing);
    m_save = addDefaultButton(m_editing ? QStringLiteral("Save") : QStringLiteral("Add Rule"));
    m_cancel = addCancelButton();
    connect(m_delete, &QPushButton::clicked, this, &RuleEditorSheet::remove);
    connect(m_save, &QPushButton::clicked, this, &RuleEditorSheet::save);
}

void RuleEditorSheet::load() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    m_name->setText(toQString(m_draft.name));
    choose(m_match, m_draft.match);
    m_pattern->setText(toQString(m_draft.pattern));

    m_account->addItem(QStringLiteral("Any account"), QString());
    const std::optional<Uuid> ruleAccount =
        m_draft.accountIDs.empty() ? std::nullopt : std::optional(m_draft.accountIDs.front());
    for (const auto& account : ledger.accounts) {
        // An archived account stays on offer only to the rule that names it.
        if (account.isArchived && account.id != ruleAccount)
            continue;
        m_account->addItem(toQString(account.name), toQString(account.id.text()));
    }
    if (ruleAccount)
        m_account->setCurrentIndex(
            std::max(0, m_account->findData(toQString(ruleAccount->text()))));

    choose(m_direction, m_draft.direction);
    if (m_draft.minimumAmount)
        m_minimum->setText(toQString(Money::format(*m_draft.minimumAmount)));
    if (m_draft.maximumAmount)
        m_maximum->setText(toQString(Money::format(*m_draft.maximumAmount)));
    m_merchant->setText(toQString(m_draft.merchantName.value_or("")));

    // Needs review and a merchant-only rule aren't among the outcomes; such a
    // draft begins as spending and asks for a category.
    const TransactionKind kind = m_draft.kind.value_or(TransactionKind::expense);
    const bool offered = std::find(kOutcomes.begin(), kOutcomes.end(), kind) != kOutcomes.end();
    const TransactionKind outcome = offered ? kind : TransactionKind::expense;
    choose(m_outcome, outcome);
    fillCategories();
    if (m_draft.categoryID)
        m_category->setCurrentIndex(m_category->findData(toQString(m_draft.categoryID->text())));
}

void RuleEditorSheet::fillCategories() {
    const auto kept = chosenID(m_category);
    const auto group = ReviewDecisions::categoryGroup(chosen<TransactionKind>(m_outcome));
    const QSignalBlocker blocker(m_category);
    m_category->clear();
    if (group) {
        for (const auto& category : m_bridge.runtime().ledger().categories) {
            if (category.group == *group)
                m_category->addItem(toQString(category.name), toQString(category.id.text()));
        }
    }
    m_category->setCurrentIndex(kept ? m_category->findData(toQString(kept->text())) : -1);
    m_category->setEnabled(group.has_value());
}

Rule RuleEditorSheet::editedRule() const {
    Rule rule = m_draft;
    rule.pattern = toStdString(trimmedText(m_pattern));
    const QString name = trimmedText(m_name);
    rule.name = name.isEmpty() ? rule.pattern : toStdString(name);
    rule.match = chosen<TextMatch>(m_match);
    rule.accountIDs.clear();
    if (const auto account = chosenID(m_account))
        rule.accountIDs.push_back(*account);
    rule.direction = chosen<AmountDirection>(m_direction);
    rule.minimumAmount = ruleAmountEntered(toStdString(m_minimum->text())).value_or(std::nullopt);
    rule.maximumAmount = ruleAmountEntered(toStdString(m_maximum->text())).value_or(std::nullopt);
    const QString merchant = trimmedText(m_merchant);
    rule.merchantName = merchant.isEmpty() ? std::nullopt : std::optional(toStdString(merchant));
    rule.kind = chosen<TransactionKind>(m_outcome);
    rule.categoryID = rule.kind == TransactionKind::transfer ? std::nullopt : chosenID(m_category);
    return rule;
}

const Rule* RuleEditorSheet::savedRule() const {
    if (!m_editing)
        return nullptr;
    const auto& rules = m_bridge.runtime().ledger().rules;
    const auto found = std::find_if(rules.begin(), rules.end(),
                                    [&](const Rule& saved) { return saved.id == m_draft.id; });
    return found == rules.end() ? nullptr : &*found;
}

RuleEditorSheet::Checked RuleEditorSheet::checked() const {
    try {
        return {.rule = ruleEntered(m_bridge.runtime().ledger(), editedRule(), savedRule())};
    } catch (const EntryError& refusal) {
        return {.refusal = refusal.kind(), .words = toQString(refusal.what())};
    }
}

std::optional<QString> RuleEditorSheet::patternRefusalText() const {
    // A blank pattern only keeps Add Rule off; a pattern that can't be used
    // is told as it is typed.
    const Checked result = checked();
    if (result.refusal != EntryError::Case::invalidPattern)
        return std::nullopt;
    return result.words;
}

bool RuleEditorSheet::canSave() const {
    for (const QLineEdit* amount : {m_minimum, m_maximum}) {
        if (!ruleAmountEntered(toStdString(amount->text())))
            return false;
    }
    return checked().rule.has_value();
}

bool RuleEditorSheet::isPreviewPending() const {
    return m_previewTimer.isActive() || m_previewShownRequest != m_previewRequest;
}

void RuleEditorSheet::fieldsChanged() {
    const auto refusal = patternRefusalText();
    m_patternRefusal->setRefusal(refusal.value_or(QString()));
    for (const auto& [field, line] :
         {std::pair{m_minimum, m_minimumRefusal}, std::pair{m_maximum, m_maximumRefusal}}) {
        const std::string typed = toStdString(field->text());
        line->setRefusal(ruleAmountEntered(typed)
                             ? QString()
                             : toQString(notAnAmountText(text::trimmed(typed))));
    }
    m_save->setEnabled(canSave());

    // A new request makes any preview still on its way stale.
    ++m_previewRequest;
    if (trimmedText(m_pattern).isEmpty() || refusal) {
        m_previewTimer.stop();
        m_previewShownRequest = m_previewRequest;
        m_preview.reset();
        m_previewBusy->hide();
        m_previewText->clear();
        m_previewText->setAccessibleName(QString());
        m_previewPanel->hide();
        return;
    }
    m_previewPanel->show();
    m_previewBusy->show();
    m_previewTimer.start();
}

void RuleEditorSheet::startPreview() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    const Rule rule = editedRule();
    // Where the rule runs once saved: a saved rule keeps its place, a new
    // one goes behind the others.
    const auto ordered = orderedRules(ledger);
    const auto place = std::find_if(ordered.begin(), ordered.end(),
                                    [&](const Rule& saved) { return saved.id == rule.id; });
    const auto position = static_cast<std::size_t>(place - ordered.begin());
    const uint64_t request = m_previewRequest;
    m_work.run([rule, snapshot = ledger,
                position] { return RulePreview::compute(rule, snapshot, position); },
               [this, request](WorkResult<RulePreview> result) {
                   if (result.value)
                       showPreview(request, *result.value);
               });
}

void RuleEditorSheet::showPreview(uint64_t request, const RulePreview& preview) {
    if (request != m_previewRequest)
        return;
    m_previewShownRequest = request;
    m_preview = preview;
    QString text = toQString(preview.countsText());
    for (const auto& line : preview.shadowTexts())
        text += QLatin1Char('\n') + toQString(line);
    m_previewText->setText(text);
    m_previewText->setAccessibleName(text);
    m_previewBusy->hide();
    Q_EMIT previewShown();
}

void RuleEditorSheet::save() {
    const auto entered = checked().rule;
    if (!entered || !canSave())
        return;
    const Rule rule = *entered;
    const bool editing = m_editing;
    // An edit that changes nothing needs no save, nor a rematch of every line.
    if (const Rule* saved = savedRule(); saved && *saved == rule) {
        accept();
        return;
    }
    saveThenClose(m_bridge.runtime(), [rule, editing](Ledger& copy) {
        return editing ? updateRule(copy, rule, true) : addRule(copy, rule, false, true);
    });
}

void RuleEditorSheet::remove() {
    saveThenClose(m_bridge.runtime(),
                  [id = m_draft.id](Ledger& copy) { return deleteRule(copy, id, true); });
}

}  // namespace copperwick::app

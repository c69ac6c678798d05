#include "app/review/review_group_card.h"

#include <algorithm>
#include <memory>

#include <QCompleter>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPointer>
#include <QVBoxLayout>

#include "app/review/review_styles.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/operations/classification.h"
#include "core/presentation/merchant_icons.h"
#include "core/presentation/review_text.h"
#include "core/reports/payment_service_detection.h"

namespace copperwick::app {

namespace {

constexpr int kBadgeSize = 40;
constexpr TransactionKind kKinds[] = {TransactionKind::expense, TransactionKind::income,
                                      TransactionKind::transfer};

// A field's label over the field, a little smaller and stronger than the
// card's text.
QLabel* captionLabel(const QString& text, QWidget* buddy, QWidget* parent) {
    QLabel* label = fieldLabel(text, buddy, parent);
    QFont font = label->font();
    font.setWeight(QFont::DemiBold);
    font.setPointSizeF(font.pointSizeF() * 0.92);
    label->setFont(font);
    return label;
}

// The refusal's words under a field: quiet, and as tall when empty as when
// not, so that the card doesn't jump while the person types.
QLabel* refusalLabel(QWidget* parent) {
    auto* label = noteLabel(QString(), parent, true);
    label->setWordWrap(true);
    label->setMinimumHeight(label->fontMetrics().height());
    return label;
}

}  // namespace

ReviewGroupCard::ReviewGroupCard(LedgerRuntime& runtime, const ReviewGroup& group,
                                 bool showsSuggestion, QAbstractItemModel* merchantNames,
                                 QWidget* parent)
    : CardFrame(parent),
      m_runtime(runtime),
      m_group(group),
      m_decision(ReviewDecisions::initial(runtime.ledger(), group)),
      m_showsSuggestion(showsSuggestion),
      m_asksPurpose(ReviewDecisions::asksPurpose(group)) {
    setAccessibleName(toQString(group.displayName));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kCardMargins);
    layout->setSpacing(14);
    layout->addWidget(buildHeader());
    layout->addWidget(buildBanner());
    layout->addWidget(m_asksPurpose ? buildPurposeEditor() : buildStandardEditor(merchantNames));

    m_remember = new QCheckBox(QStringLiteral("Remember for similar transactions"), this);
    m_remember->setAccessibleName(m_remember->text());
    m_rememberNote = noteLabel(QString(), this, true);
    m_rememberNote->setContentsMargins(24, 0, 0, 0);
    auto* rememberBlock = new QVBoxLayout;
    rememberBlock->setSpacing(2);
    rememberBlock->addWidget(m_remember);
    rememberBlock->addWidget(m_rememberNote);
    layout->addLayout(rememberBlock);

    auto* actions = new QHBoxLayout;
    actions->setSpacing(8);
    m_showTransactions = pushButton(QStringLiteral("Show Transactions"), this);
    actions->addWidget(m_showTransactions);
    m_askLocalAI = pushButton(QStringLiteral("Ask Local AI about this group"), this);
    m_askLocalAI->hide();
    actions->addWidget(m_askLocalAI);
    actions->addStretch(1);
    m_save = pushButton(QStringLiteral("Save"), this);
    makePrimary(m_save);
    actions->addWidget(m_save);
    layout->addLayout(actions);
    m_askNote = noteLabel(QString(), this, true);
    m_askNote->hide();
    layout->addWidget(m_askNote);

    connect(m_askLocalAI, &QPushButton::clicked, this, [this] { askLocalAI(); });
    connect(m_remember, &QCheckBox::toggled, this, [this](bool on) {
        if (m_updating)
            return;
        m_decision.remember = on;
        decisionChanged();
    });
    connect(m_showTransactions, &QPushButton::clicked, this, [this] { showTransactions(); });
    connect(m_save, &QPushButton::clicked, this, [this] { save(); });

    // Top to bottom, as the card reads.
    QList<QWidget*> order;
    if (m_approve)
        order << m_approve;
    if (m_merchant)
        order << m_merchant << m_category << m_kind;
    else {
        for (QAbstractButton* button : m_purposes->buttons())
            order << button;
        order << m_category;
    }
    order << m_remember << m_showTransactions << m_askLocalAI << m_save;
    for (qsizetype i = 0; i + 1 < order.size(); ++i)
        setTabOrder(order[i], order[i + 1]);

    fillCategories();
    updateHeader();
    showDecision();
}

QWidget* ReviewGroupCard::buildHeader() {
    auto* header = new QWidget(this);
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    m_badge = new MerchantBadge(kBadgeSize, header);
    layout->addWidget(m_badge, 0, Qt::AlignTop);

    auto* words = new QVBoxLayout;
    words->setSpacing(1);
    m_name = new ElidedLabel(QString(), header);
    QFont nameFont = m_name->font();
    nameFont.setWeight(QFont::DemiBold);
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.12);
    m_name->setFont(nameFont);
    m_example = new ElidedLabel(QString(), header);
    m_example->setForegroundRole(QPalette::PlaceholderText);
    m_facts = new ElidedLabel(QString(), header);
    m_facts->setForegroundRole(QPalette::PlaceholderText);
    QFont small = m_facts->font();
    small.setPointSizeF(small.pointSizeF() * 0.92);
    m_facts->setFont(small);
    words->addWidget(m_name);
    words->addWidget(m_example);
    words->addWidget(m_facts);
    layout->addLayout(words, 1);

    m_total = new QLabel(header);
    m_total->setFont(nameFont);
    m_total->setAlignment(Qt::AlignRight | Qt::AlignTop);
    layout->addWidget(m_total, 0, Qt::AlignTop);
    return header;
}

QWidget* ReviewGroupCard::buildBanner() {
    m_banner = new TintPanel(this);
    m_banner->setObjectName(QStringLiteral("suggestionBanner"));

    auto* layout = new QHBoxLayout(m_banner);
    layout->setContentsMargins(12, 10, 12, 10);
    layout->setSpacing(10);
    m_bannerSymbol = new SymbolView("lightbulb", 18, m_banner);
    layout->addWidget(m_bannerSymbol, 0, Qt::AlignTop);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    m_bannerTitle = headingLabel(QString(), m_banner);
    m_bannerFiling = new QLabel(m_banner);
    m_bannerFiling->setWordWrap(true);
    m_bannerReason = noteLabel(QString(), m_banner, true);
    words->addWidget(m_bannerTitle);
    words->addWidget(m_bannerFiling);
    words->addWidget(m_bannerReason);
    layout->addLayout(words, 1);
    m_approve = pushButton(QStringLiteral("Approve"), m_banner);
    layout->addWidget(m_approve, 0, Qt::AlignVCenter);
    connect(m_approve, &QPushButton::clicked, this, [this] { approve(); });
    return m_banner;
}

QWidget* ReviewGroupCard::buildStandardEditor(QAbstractItemModel* merchantNames) {
    auto* editor = new QWidget(this);
    auto* grid = new QGridLayout(editor);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(14);
    grid->setVerticalSpacing(4);

    m_merchant = new QLineEdit(editor);
    m_merchant->setClearButtonEnabled(true);
    if (merchantNames) {
        auto* completer = new QCompleter(merchantNames, m_merchant);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setFilterMode(Qt::MatchContains);
        m_merchant->setCompleter(completer);
    }
    makeCategoryBox(editor);
    m_kind = new QComboBox(editor);
    for (const TransactionKind kind : kKinds)
        m_kind->addItem(toQString(label(kind)), QString::fromLatin1(rawValue(kind).data()));

    grid->addWidget(captionLabel(QStringLiteral("Merchant"), m_merchant, editor), 0, 0);
    grid->addWidget(captionLabel(QStringLiteral("Category"), m_category, editor), 0, 1);
    grid->addWidget(captionLabel(QStringLiteral("File as"), m_kind, editor), 0, 2);
    grid->addWidget(m_merchant, 1, 0);
    grid->addWidget(m_category, 1, 1);
    grid->addWidget(m_kind, 1, 2);
    m_merchantRefusal = refusalLabel(editor);
    m_categoryRefusal = refusalLabel(editor);
    grid->addWidget(m_merchantRefusal, 2, 0);
    grid->addWidget(m_categoryRefusal, 2, 1, 1, 2);
    grid->setColumnStretch(0, 5);
    grid->setColumnStretch(1, 4);
    grid->setColumnStretch(2, 3);

    connect(m_merchant, &QLineEdit::textEdited, this, [this](const QString& text) {
        m_decision.merchantName = toStdString(text);
        decisionChanged();
    });
    // A name picked from the completion list arrives without an edit.
    if (QCompleter* completer = m_merchant->completer())
        connect(completer, qOverload<const QString&>(&QCompleter::activated), this,
                [this](const QString& text) {
                    m_decision.merchantName = toStdString(text);
                    decisionChanged();
                });
    connect(m_kind, qOverload<int>(&QComboBox::currentIndexChanged), this, [this](int index) {
        if (m_updating || index < 0)
            return;
        m_decision.kind = kKinds[index];
        fillCategories();
        decisionChanged();
    });
    return editor;
}

void ReviewGroupCard::makeCategoryBox(QWidget* parent) {
    m_category = new QComboBox(parent);
    m_category->setPlaceholderText(QStringLiteral("Choose"));
    connect(m_category, qOverload<int>(&QComboBox::currentIndexChanged), this, [this](int index) {
        if (m_updating)
            return;
        m_decision.categoryID =
            index < 0 ? std::nullopt
                      : Uuid::parse(toStdString(m_category->itemData(index).toString()));
        decisionChanged();
    });
}

QWidget* ReviewGroupCard::buildPurposeEditor() {
    m_purposeEditor = new QWidget(this);
    auto* layout = new QVBoxLayout(m_purposeEditor);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    auto* question = captionLabel(QStringLiteral("What was this for?"), nullptr, m_purposeEditor);
    layout->addWidget(question);
    m_purposes = new QButtonGroup(this);
    m_purposes->setExclusive(true);
    for (const ZelleChoice choice : zelleChoices(m_group.isMoneyIn)) {
        auto* button = new QRadioButton(toQString(traits(choice).label), m_purposeEditor);
        button->setAccessibleName(button->text());
        m_purposes->addButton(button, static_cast<int>(choice));
        layout->addWidget(button);
    }
    m_purposeRefusal = refusalLabel(m_purposeEditor);
    layout->addWidget(m_purposeRefusal);

    m_categoryField = new QWidget(m_purposeEditor);
    auto* categoryLayout = new QVBoxLayout(m_categoryField);
    categoryLayout->setContentsMargins(0, 4, 0, 0);
    categoryLayout->setSpacing(4);
    makeCategoryBox(m_categoryField);
    m_category->setMinimumWidth(220);
    categoryLayout->addWidget(
        captionLabel(QStringLiteral("Category"), m_category, m_categoryField));
    categoryLayout->addWidget(m_category, 0, Qt::AlignLeft);
    m_categoryRefusal = refusalLabel(m_categoryField);
    categoryLayout->addWidget(m_categoryRefusal);
    layout->addWidget(m_categoryField);

    connect(m_purposes, &QButtonGroup::idToggled, this, [this](int id, bool checked) {
        if (m_updating || !checked)
            return;
        m_decision.purpose = static_cast<ZelleChoice>(id);
        fillCategories();
        decisionChanged();
    });
    return m_purposeEditor;
}

QRadioButton* ReviewGroupCard::purposeButton(ZelleChoice choice) const {
    if (!m_purposes)
        return nullptr;
    return qobject_cast<QRadioButton*>(m_purposes->button(static_cast<int>(choice)));
}

std::optional<CategoryGroup> ReviewGroupCard::wantedCategoryGroup() const {
    if (!m_asksPurpose)
        return ReviewDecisions::categoryGroup(m_decision.kind);
    if (m_decision.purpose && traits(*m_decision.purpose).needsCategory)
        return traits(*m_decision.purpose).categoryGroup;
    return std::nullopt;
}

void ReviewGroupCard::fillCategories() {
    const auto wanted = wantedCategoryGroup();
    const Ledger& ledger = m_runtime.ledger();
    // A choice that no longer fits (the kind changed, the category went)
    // is let go, so that Save waits for a new one.
    if (m_decision.categoryID) {
        const LedgerCategory* chosen = ledger.category(m_decision.categoryID);
        if (!chosen || !wanted || chosen->group != *wanted)
            m_decision.categoryID.reset();
    }
    m_updating = true;
    m_category->clear();
    if (wanted) {
        for (const LedgerCategory& category : ledger.categories) {
            if (category.group == *wanted)
                m_category->addItem(toQString(category.name), toQString(category.id.text()));
        }
    }
    m_category->setCurrentIndex(m_decision.categoryID
                                    ? m_category->findData(toQString(m_decision.categoryID->text()))
                                    : -1);
    m_category->setEnabled(wanted.has_value());
    if (m_categoryField)
        m_categoryField->setVisible(wanted.has_value());
    m_updating = false;
}

void ReviewGroupCard::setGroup(const ReviewGroup& group) {
    if (group == m_group)
        return;
    m_group = group;
    fillCategories();
    updateHeader();
    showDecision();
}

void ReviewGroupCard::refreshChoices() {
    fillCategories();
    updateHeader();
    showDecision();
}

void ReviewGroupCard::updateHeader() {
    const Ledger& ledger = m_runtime.ledger();
    const Suggestion* suggestion = m_group.suggestion ? &*m_group.suggestion : nullptr;
    std::optional<std::string_view> categoryName;
    if (suggestion) {
        if (const LedgerCategory* category = ledger.category(suggestion->categoryID))
            categoryName = category->name;
    }
    m_badge->setDescriptor(MerchantIconCatalog::shared().descriptor(
        m_group.displayName, categoryName,
        suggestion ? std::optional(suggestion->kind) : std::nullopt));
    m_name->setFullText(toQString(m_group.displayName));
    m_example->setFullText(toQString(m_group.example));
    std::string accounts;
    for (const auto& name : m_group.accountNames)
        accounts += (accounts.empty() ? "" : ", ") + name;
    std::string facts = ReviewText::transactionCount(m_group.transactionIDs.size()) + " \u00B7 " +
                        DateText::range(m_group.firstDate, m_group.lastDate);
    if (!accounts.empty())
        facts += " \u00B7 " + accounts;
    m_facts->setFullText(toQString(facts));
    setLabelText(m_total, toQString(Money::format(m_group.total)));

    const bool showsBanner = m_showsSuggestion && suggestion;
    m_banner->setVisible(showsBanner);
    if (showsBanner) {
        m_bannerSymbol->setSymbol(ReviewText::suggestionSymbol(suggestion->source));
        setLabelText(m_bannerTitle, toQString(ReviewText::suggestionTitle(suggestion->source)));
        setLabelText(m_bannerFiling,
                     toQString(ReviewText::filing(ledger, suggestion->merchantName,
                                                  suggestion->categoryID, suggestion->kind)));
        setLabelText(m_bannerReason, toQString(suggestion->reason));
        m_bannerReason->setVisible(!suggestion->reason.empty());
    }
}

void ReviewGroupCard::showDecision() {
    m_updating = true;
    if (m_merchant && toStdString(m_merchant->text()) != m_decision.merchantName)
        m_merchant->setText(toQString(m_decision.merchantName));
    if (m_kind) {
        for (int i = 0; i < m_kind->count(); ++i) {
            if (kKinds[i] == m_decision.kind)
                m_kind->setCurrentIndex(i);
        }
    }
    if (m_purposes) {
        if (m_decision.purpose)
            if (QAbstractButton* button = m_purposes->button(static_cast<int>(*m_decision.purpose)))
                button->setChecked(true);
    }
    m_remember->setChecked(m_decision.remember);
    m_updating = false;
    decisionChanged();
}

void ReviewGroupCard::decisionChanged() {
    const auto refusal = ReviewDecisions::refusal(m_runtime.ledger(), m_group, m_decision);
    m_save->setEnabled(!refusal);
    const QString words = refusal ? toQString(refusal->words) : QString();
    const auto place = [&](QLabel* label, ReviewField field) {
        if (label)
            setLabelText(label, refusal && refusal->field == field ? words : QString());
    };
    place(m_merchantRefusal, ReviewField::merchant);
    place(m_categoryRefusal, ReviewField::category);
    place(m_purposeRefusal, ReviewField::purpose);
    // Once a purpose is chosen its line has nothing more to say.
    if (m_purposeRefusal)
        m_purposeRefusal->setVisible(!m_decision.purpose);
    setLabelText(m_rememberNote, toQString(m_decision.remember ? kRememberOn : kRememberOff));
}

bool ReviewGroupCard::canSave() const {
    return !ReviewDecisions::refusal(m_runtime.ledger(), m_group, m_decision);
}

QString ReviewGroupCard::refusalText() const {
    const auto refusal = ReviewDecisions::refusal(m_runtime.ledger(), m_group, m_decision);
    return refusal ? toQString(refusal->words) : QString();
}

bool ReviewGroupCard::save() {
    if (!canSave())
        return false;
    const ReviewGroup group = m_group;
    const ReviewDecision decision = m_decision;
    const Instant now = m_runtime.now();
    return decide([group, decision, now](Ledger& copy) -> std::optional<LedgerDelta> {
        return ReviewDecisions::decide(copy, group, decision, now);
    });
}

bool ReviewGroupCard::approve() {
    if (!m_group.suggestion)
        return false;
    const std::vector<Uuid> ids = m_group.transactionIDs;
    const bool remember = m_decision.remember;
    const Instant now = m_runtime.now();
    return decide([ids, remember, now](Ledger& copy) -> std::optional<LedgerDelta> {
        return approveSuggestions(copy, ids, remember, now);
    });
}

bool ReviewGroupCard::decide(LedgerRuntime::PossibleChange change) {
    LedgerRuntime& runtime = m_runtime;
    auto saved = std::make_shared<bool>(false);
    runtime.applyForScreen(
        std::move(change),
        [card = QPointer<ReviewGroupCard>(this), groupID = m_group.id,
         saved](const ApplyResult& result) {
            *saved = result.saved;
            if (!card)
                return;
            card->setEnabled(true);
            if (result.saved)
                Q_EMIT card->saved(groupID);
        },
        m_saveInBackgroundFrom);
    // Once `saved` is told the card may be gone: nothing of it is touched.
    if (*saved)
        return true;
    if (!runtime.isChangingInBackground())
        return false;
    // On a long history a remembered decision looks again at every line:
    // the card waits for its save, the window doesn't.
    setEnabled(false);
    return true;
}

void ReviewGroupCard::showTransactions() {
    TransactionsFocus focus;
    focus.title = m_group.displayName;
    focus.ids.insert(m_group.transactionIDs.begin(), m_group.transactionIDs.end());
    m_runtime.setTransactionsFocus(std::move(focus));
    m_runtime.setSection(AppSection::transactions);
}

void ReviewGroupCard::focusEditor() {
    QWidget* first = m_merchant;
    if (!first && m_purposes) {
        first = m_purposes->checkedButton();
        if (!first && !m_purposes->buttons().isEmpty())
            first = m_purposes->buttons().front();
    }
    if (first)
        first->setFocus(Qt::TabFocusReason);
}

void ReviewGroupCard::setIntelligence(IntelligenceController* intelligence) {
    m_intelligence = intelligence;
    refreshIntelligence();
}

void ReviewGroupCard::refreshIntelligence() {
    const bool on = m_intelligence && m_intelligence->switches().enabled;
    m_askLocalAI->setVisible(on);
    if (!on) {
        m_asking = false;
        m_unanswered = false;
        m_askNote->hide();
        return;
    }
    // One run at a time: while any goes, this card can't start another.
    m_askLocalAI->setEnabled(!m_intelligence->isSuggesting());
    if (m_intelligence->workingGroupIDs().contains(m_group.id)) {
        setLabelText(m_askNote, QStringLiteral("Local AI is looking at this group\u2026"));
        m_askNote->show();
        return;
    }
    if (m_asking && !m_intelligence->isSuggesting()) {
        m_asking = false;
        // The suggestion, when there is one, is the banner's to show; a model
        // that couldn't be asked has said why in the status already.
        const Ledger& ledger = m_runtime.ledger();
        const bool suggested = std::any_of(
            m_group.transactionIDs.begin(), m_group.transactionIDs.end(), [&](const Uuid& id) {
                const LedgerTransaction* line = ledger.transaction(id);
                return line && line->suggestion && line->suggestion->source == MatchMethod::ai;
            });
        m_unanswered = !suggested && !m_runtime.statusMessage();
    }
    if (m_unanswered)
        setLabelText(m_askNote, QStringLiteral("Local AI had no suggestion for this group."));
    m_askNote->setVisible(m_unanswered);
}

void ReviewGroupCard::askLocalAI() {
    if (!m_intelligence || m_intelligence->isSuggesting())
        return;
    m_asking = true;
    m_unanswered = false;
    // Only a suggestion: the person is at the card, and approves it there.
    m_intelligence->start({m_group}, /*suggestOnly=*/true);
    refreshIntelligence();
}

void ReviewGroupCard::changeEvent(QEvent* event) {
    CardFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_save)
        makePrimary(m_save);
}

void ReviewGroupCard::keyPressEvent(QKeyEvent* event) {
    // Enter from anywhere in the editor saves, as a form's default button would.
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        event->modifiers() == Qt::NoModifier) {
        if (save())
            event->accept();
        return;
    }
    CardFrame::keyPressEvent(event);
}

}  // namespace copperwick::app

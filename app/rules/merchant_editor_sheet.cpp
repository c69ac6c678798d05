#include "app/rules/merchant_editor_sheet.h"

#include <algorithm>

#include <QFormLayout>
#include <QHBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/text_styles.h"
#include "core/operations/entry_error.h"
#include "core/operations/merchants.h"
#include "core/reports/merchant_summary.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kIntro =
    "Changes apply to every transaction from this merchant that you haven't set by hand.";
constexpr std::string_view kNoKeysText =
    "None yet. Choose \u201CRemember\u201D when you file one of its transactions.";

// "Always file as": no default (-1), or a kind.
constexpr int kNoDefault = -1;

std::optional<Uuid> chosenID(const QComboBox* box) {
    const QVariant data = box->currentData();
    if (!data.isValid())
        return std::nullopt;
    return Uuid::parse(toStdString(data.toString()));
}

std::optional<TransactionKind> chosenKind(const QComboBox* box) {
    const int data = box->currentData().toInt();
    if (data == kNoDefault)
        return std::nullopt;
    return static_cast<TransactionKind>(data);
}

}  // namespace

MerchantEditorSheet::MerchantEditorSheet(RuntimeBridge& bridge, Uuid merchantID, QWidget* parent)
    : SheetDialog(QStringLiteral("Edit merchant"), toQString(kIntro), parent), m_bridge(bridge) {
    if (const Merchant* merchant = m_bridge.runtime().ledger().merchant(merchantID))
        m_merchant = *merchant;
    else
        m_merchant.id = merchantID;
    m_keys = m_merchant.keys;

    setModal(true);
    keepAtLeastWide(520);

    makeFields();
    body()->addStretch(1);
    m_save = addDefaultButton(QStringLiteral("Save"));
    m_cancel = addCancelButton();
    connect(m_save, &QPushButton::clicked, this, &MerchantEditorSheet::save);

    load();
    connect(m_name, &QLineEdit::textChanged, this, &MerchantEditorSheet::fieldsChanged);
    connect(m_filing, &QComboBox::currentIndexChanged, this, [this] {
        fillCategories();
        fieldsChanged();
    });
    connect(m_category, &QComboBox::currentIndexChanged, this, &MerchantEditorSheet::fieldsChanged);
    connect(m_mergeTarget, &QComboBox::currentIndexChanged, this,
            &MerchantEditorSheet::fieldsChanged);
    fieldsChanged();
    m_name->setFocus();
}

void MerchantEditorSheet::makeFields() {
    QWidget* fields = this;
    QFormLayout* form = addForm();
    form->setVerticalSpacing(10);

    m_name = new QLineEdit(fields);
    QLabel* nameLabel = fieldLabel(QStringLiteral("Name"), m_name, fields);
    form->addRow(nameLabel, withRefusalLine(m_name, m_nameRefusal, fields));

    auto* filing = new QWidget(fields);
    QHBoxLayout* filingLayout = fieldRowLayout(filing);
    m_filing = new QComboBox(filing);
    m_filing->addItem(QStringLiteral("No default"), kNoDefault);
    for (const TransactionKind kind :
         {TransactionKind::expense, TransactionKind::income, TransactionKind::transfer})
        m_filing->addItem(toQString(label(kind)), static_cast<int>(kind));
    filingLayout->addWidget(m_filing);
    m_category = new QComboBox(filing);
    m_category->setPlaceholderText(QStringLiteral("Choose"));
    m_category->setAccessibleName(QStringLiteral("Category"));
    m_category->setMinimumContentsLength(16);
    filingLayout->addWidget(m_category, 1);
    QLabel* filingLabel = fieldLabel(QStringLiteral("Always file as"), m_filing, fields);
    form->addRow(filingLabel, withRefusalLine(filing, m_filingRefusal, fields));

    auto* keys = new QWidget(fields);
    m_keyRows = new QVBoxLayout(keys);
    m_keyRows->setContentsMargins(0, 0, 0, 0);
    m_keyRows->setSpacing(4);
    m_noKeys = secondaryLabel(toQString(kNoKeysText), keys);
    m_keyRows->addWidget(m_noKeys);
    QLabel* keysLabel = textLabel(QStringLiteral("Bank text it recognizes"), fields);
    keysLabel->setAlignment(Qt::AlignRight | Qt::AlignTop);
    form->addRow(keysLabel, keys);

    auto* merge = new QWidget(fields);
    QHBoxLayout* mergeLayout = fieldRowLayout(merge);
    m_mergeTarget = new QComboBox(merge);
    m_mergeTarget->setPlaceholderText(QStringLiteral("Choose a merchant\u2026"));
    m_mergeTarget->setMinimumContentsLength(20);
    mergeLayout->addWidget(m_mergeTarget, 1);
    m_merge = pushButton(QStringLiteral("Merge"), merge);
    mergeLayout->addWidget(m_merge);
    form->addRow(fieldLabel(QStringLiteral("Merge into"), m_mergeTarget, fields), merge);
    connect(m_merge, &QPushButton::clicked, this, &MerchantEditorSheet::merge);
}

void MerchantEditorSheet::load() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    m_name->setText(toQString(m_merchant.name));

    // A category's own group says spending or income; the kind alone stands
    // when there is no category.
    std::optional<TransactionKind> filing = m_merchant.kind;
    if (const LedgerCategory* category = ledger.category(m_merchant.categoryID);
        category && m_merchant.kind != TransactionKind::transfer)
        filing = category->group == CategoryGroup::income ? TransactionKind::income
                                                          : TransactionKind::expense;
    if (filing == TransactionKind::unknown)
        filing.reset();
    m_filing->setCurrentIndex(
        std::max(0, m_filing->findData(filing ? static_cast<int>(*filing) : kNoDefault)));
    fillCategories();
    if (m_merchant.categoryID)
        m_category->setCurrentIndex(m_category->findData(toQString(m_merchant.categoryID->text())));

    for (const Merchant* other : merchantsMatching(ledger, "")) {
        if (other->id != m_merchant.id)
            m_mergeTarget->addItem(toQString(other->name), toQString(other->id.text()));
    }
    m_mergeTarget->setCurrentIndex(-1);
    showKeys();
}

void MerchantEditorSheet::fillCategories() {
    const auto kept = chosenID(m_category);
    const auto kind = chosenKind(m_filing);
    const bool needsCategory = kind == TransactionKind::expense || kind == TransactionKind::income;
    const QSignalBlocker blocker(m_category);
    m_category->clear();
    if (needsCategory) {
        const CategoryGroup group =
            kind == TransactionKind::income ? CategoryGroup::income : CategoryGroup::expense;
        for (const auto& category : m_bridge.runtime().ledger().categories) {
            if (category.group == group)
                m_category->addItem(toQString(category.name), toQString(category.id.text()));
        }
    }
    m_category->setCurrentIndex(kept ? m_category->findData(toQString(kept->text())) : -1);
    m_category->setEnabled(needsCategory);
}

void MerchantEditorSheet::showKeys() {
    // The rows are made again each time. A row goes once the event that
    // asked is done, since its own "Forget" may be the button just pressed.
    for (QPushButton* button : m_forget) {
        QWidget* row = button->parentWidget();
        m_keyRows->removeWidget(row);
        row->hide();
        row->deleteLater();
    }
    m_forget.clear();
    for (std::size_t index = 0; index < m_keys.size(); ++index) {
        auto* row = new QWidget(m_noKeys->parentWidget());
        QHBoxLayout* rowLayout = fieldRowLayout(row);
        QLabel* key = textLabel(toQString(m_keys[index]), row);
        key->setTextInteractionFlags(Qt::TextSelectableByMouse);
        rowLayout->addWidget(key, 1);
        QPushButton* forgetButton = pushButton(QStringLiteral("Forget"), row);
        forgetButton->setAccessibleDescription(key->text());
        rowLayout->addWidget(forgetButton);
        connect(forgetButton, &QPushButton::clicked, this, [this, index] { forget(index); });
        m_keyRows->insertWidget(static_cast<int>(index), row);
        m_forget.push_back(forgetButton);
    }
    m_noKeys->setVisible(m_keys.empty());
    orderTabsAsLaidOut();
}

void MerchantEditorSheet::forget(std::size_t index) {
    if (index >= m_keys.size())
        return;
    m_keys.erase(m_keys.begin() + static_cast<std::ptrdiff_t>(index));
    showKeys();
    // The keyboard stays where the forgotten text was.
    if (!m_forget.empty())
        m_forget[std::min(index, m_forget.size() - 1)]->setFocus();
    else
        m_save->setFocus();
}

MerchantFiling MerchantEditorSheet::chosenFiling() const {
    const auto kind = chosenKind(m_filing);
    if (kind == TransactionKind::transfer)
        return {.kind = MerchantFiling::Kind::transfer};
    if (kind)
        return {.kind = MerchantFiling::Kind::category, .categoryID = chosenID(m_category)};
    return {};
}

MerchantEditorSheet::Checked MerchantEditorSheet::checked() const {
    Checked result;
    try {
        result.name = merchantNameEntered(toStdString(m_name->text()));
    } catch (const EntryError& refusal) {
        result.nameRefusal = toQString(refusal.what());
    }
    try {
        Merchant merchant = withFiling(m_bridge.runtime().ledger(), m_merchant, chosenFiling());
        merchant.keys = m_keys;
        result.merchant = std::move(merchant);
    } catch (const EntryError& refusal) {
        result.filingRefusal = toQString(refusal.what());
    }
    return result;
}

bool MerchantEditorSheet::canSave() const {
    const Checked result = checked();
    return result.name && result.merchant;
}

void MerchantEditorSheet::fieldsChanged() {
    const Checked result = checked();
    m_nameRefusal->setRefusal(result.nameRefusal);
    m_filingRefusal->setRefusal(result.filingRefusal);
    m_save->setEnabled(result.name && result.merchant);
    m_merge->setEnabled(chosenID(m_mergeTarget).has_value());
}

void MerchantEditorSheet::save() {
    const Checked result = checked();
    if (!result.name || !result.merchant)
        return;
    const Merchant edited = *result.merchant;
    const std::string name = *result.name;
    const bool renamed = name != m_merchant.name;
    // Nothing changed needs no save, nor a rematch of every line.
    const Merchant* saved = m_bridge.runtime().ledger().merchant(edited.id);
    if (!renamed && saved && *saved == edited) {
        accept();
        return;
    }
    saveThenClose(m_bridge.runtime(), [edited, name, renamed](Ledger& copy) {
        // Written first under its old name, so that a new name which merges
        // it into another merchant carries what was just decided along.
        LedgerDelta delta = updateMerchant(copy, edited, true);
        if (renamed)
            delta.merge(renameMerchant(copy, edited.id, name));
        return delta;
    });
}

void MerchantEditorSheet::merge() {
    const auto target = chosenID(m_mergeTarget);
    if (!target)
        return;
    saveThenClose(m_bridge.runtime(), [source = m_merchant.id, target = *target](Ledger& copy) {
        return mergeMerchants(copy, source, target);
    });
}

}  // namespace copperwick::app

#include "app/transactions/split_sheet.h"

#include <algorithm>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/money.h"
#include "core/operations/transaction_correction.h"

namespace copperwick::app {

SplitSheet::SplitSheet(LedgerRuntime& runtime, const Uuid& id, QWidget* parent)
    : SheetDialog(QStringLiteral("Split Between Categories"), {}, parent),
      m_runtime(runtime),
      m_id(id) {
    keepAtLeastWide(520);
    const LedgerTransaction* line = m_runtime.ledger().transaction(id);
    if (line) {
        m_amount = line->amount;
        m_currency = line->currency;
        if (line->splits)
            setWindowTitle(QStringLiteral("Edit Split"));
    }
    setLabelText(titleLabel(), windowTitle());
    setAccessibleName(windowTitle());
    setLabelText(introLabel(), QStringLiteral("Divide ") +
                                   toQString(Money::format(m_amount, m_currency)) +
                                   QStringLiteral(" between categories."));
    introLabel()->setVisible(true);

    m_rows = new QVBoxLayout;
    m_rows->setSpacing(6);
    body()->addLayout(m_rows);
    m_refusal = new RefusalLine(this);
    body()->addWidget(m_refusal);
    auto* tools = new QHBoxLayout;
    m_addPart = pushButton(QStringLiteral("Add Part"), this);
    tools->addWidget(m_addPart);
    tools->addStretch(1);
    m_remaining = textLabel({}, this);
    tools->addWidget(m_remaining);
    body()->addLayout(tools);

    if (line && line->splits) {
        for (const TransactionSplit& part : *line->splits)
            appendPart(
                part.categoryID,
                toQString(Money::decimalString(part.amount < 0 ? -part.amount : part.amount)));
        m_removeSplit = addFootButton(QStringLiteral("Remove Split"));
        connect(m_removeSplit, &QPushButton::clicked, this, &SplitSheet::removeSplit);
    } else {
        appendPart(std::nullopt, {});
        appendPart(std::nullopt, {});
    }
    addCancelButton();
    m_save = addDefaultButton(QStringLiteral("Save Split"));
    connect(m_save, &QPushButton::clicked, this, &SplitSheet::save);
    connect(m_addPart, &QPushButton::clicked, this, &SplitSheet::addPart);
    updateRemaining();
}

SplitSheet::PartRow& SplitSheet::appendPart(const std::optional<Uuid>& categoryID,
                                            const QString& amount) {
    PartRow part;
    part.row = new QWidget(this);
    QHBoxLayout* layout = fieldRowLayout(part.row);
    const int number = static_cast<int>(m_parts.size()) + 1;
    part.category = new QComboBox(part.row);
    part.category->setAccessibleName(QStringLiteral("Category of part %1").arg(number));
    part.category->addItem(QStringLiteral("Choose"));
    for (const LedgerCategory& category : m_runtime.ledger().categories) {
        if (category.group == CategoryGroup::expense)
            part.category->addItem(toQString(category.name), toQString(category.id.text()));
    }
    if (categoryID)
        part.category->setCurrentIndex(
            std::max(0, part.category->findData(toQString(categoryID->text()))));
    part.amount = new QLineEdit(amount, part.row);
    part.amount->setAccessibleName(QStringLiteral("Amount of part %1").arg(number));
    part.amount->setMaximumWidth(140);
    part.remove = pushButton(QStringLiteral("Remove Part"), part.row);
    layout->addWidget(part.category, 1);
    layout->addWidget(part.amount);
    layout->addWidget(part.remove);
    m_rows->addWidget(part.row);
    connect(part.amount, &QLineEdit::textChanged, this, &SplitSheet::updateRemaining);
    connect(part.remove, &QPushButton::clicked, this, [this, row = part.row] { removePart(row); });
    m_parts.push_back(part);
    return m_parts.back();
}

void SplitSheet::addPart() {
    PartRow& part = appendPart(std::nullopt, {});
    orderTabsAsLaidOut();
    part.category->setFocus(Qt::TabFocusReason);
    updateRemaining();
}

void SplitSheet::removePart(QWidget* row) {
    const auto found = std::find_if(m_parts.begin(), m_parts.end(),
                                    [row](const PartRow& part) { return part.row == row; });
    if (found == m_parts.end())
        return;
    m_parts.erase(found);
    row->hide();
    row->deleteLater();
    orderTabsAsLaidOut();
    m_addPart->setFocus(Qt::TabFocusReason);
    updateRemaining();
}

void SplitSheet::updateRemaining() {
    int64_t left = m_amount;
    for (const PartRow& part : m_parts) {
        const std::optional<int64_t> cents = Money::parseCents(toStdString(part.amount->text()));
        if (!cents)
            continue;
        // Typed as a positive figure or signed like the line: either way a
        // part takes its size from what is left.
        const int64_t magnitude = *cents < 0 ? -*cents : *cents;
        left += m_amount < 0 ? magnitude : -magnitude;
    }
    setLabelText(m_remaining,
                 QStringLiteral("Left to divide: ") + toQString(Money::format(left, m_currency)));
}

QString SplitSheet::refusalText() const {
    return m_refusal->isHidden() ? QString() : m_refusal->label()->text();
}

void SplitSheet::save() {
    m_refusal->setRefusal({});
    std::vector<std::string> typed;
    for (const PartRow& part : m_parts) {
        // Blank parts are left out: Add Part then typing nothing isn't a part.
        const QString category = part.category->currentData().toString();
        if (category.isEmpty() && part.amount->text().trimmed().isEmpty())
            continue;
        typed.push_back(toStdString(category) + "=" + toStdString(part.amount->text().trimmed()));
    }
    std::vector<TransactionSplit> parts;
    try {
        parts = splitPartsEntered(m_runtime.ledger(), m_id, typed);
    } catch (const EntryError& error) {
        // The core names the text it couldn't read; the sheet says what a
        // split needs.
        m_refusal->setRefusal(toQString(EntryError::text(
            error.kind() == EntryError::Case::unavailable ? EntryError::Case::unavailable
                                                          : EntryError::Case::splits)));
        return;
    }
    if (parts.empty() && !removeSplitButton()) {
        m_refusal->setRefusal(toQString(EntryError::text(EntryError::Case::splits)));
        return;
    }
    saveParts(parts);
}

void SplitSheet::removeSplit() {
    m_refusal->setRefusal({});
    saveParts({});
}

void SplitSheet::saveParts(const std::vector<TransactionSplit>& parts) {
    const Instant now = m_runtime.now();
    const LedgerRuntime::Change change = [id = m_id, parts, now](Ledger& ledger) {
        return splitTransaction(ledger, id, parts, now);
    };
    saveEntryThenClose(m_runtime, change, [this](const EntryError& error) {
        m_refusal->setRefusal(QString::fromUtf8(error.what()));
    });
}

}  // namespace copperwick::app

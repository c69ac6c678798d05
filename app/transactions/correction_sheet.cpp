#include "app/transactions/correction_sheet.h"

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/operations/transaction_correction.h"

namespace copperwick::app {

namespace {

QString detailsText(const TransactionDetails& details, const std::string& currency) {
    return toQString(DateText::medium(details.date) + " \u00B7 " +
                     Money::format(details.amount, currency) + " \u00B7 " + details.description);
}

}  // namespace

CorrectionSheet::CorrectionSheet(LedgerRuntime& runtime, const Uuid& id, QWidget* parent)
    : SheetDialog(QStringLiteral("Correct Date, Amount or Description"), {}, parent),
      m_runtime(runtime),
      m_id(id) {
    countAsEntryEditor(m_runtime);
    keepAtLeastWide(500);
    const LedgerTransaction* line = m_runtime.ledger().transaction(id);
    const LedgerTransaction shown = line ? *line : LedgerTransaction{};

    m_lineRefusal = new RefusalLine(this);
    body()->addWidget(m_lineRefusal);
    QFormLayout* form = addForm();
    m_date = new QLineEdit(toQString(shown.date.iso()), this);
    m_date->setToolTip(QStringLiteral("YYYY-MM-DD"));
    form->addRow(fieldLabel(QStringLiteral("Date"), m_date, this),
                 withRefusalLine(m_date, m_dateRefusal, this));

    m_amount = new QLineEdit(toQString(Money::decimalString(shown.amount)), this);
    form->addRow(fieldLabel(QStringLiteral("Amount"), m_amount, this),
                 withRefusalLine(m_amount, m_amountRefusal, this));

    m_description = new QLineEdit(toQString(shown.rawDescription), this);
    form->addRow(fieldLabel(QStringLiteral("Description"), m_description, this),
                 withRefusalLine(m_description, m_descriptionRefusal, this));

    m_reason = new QLineEdit(this);
    m_reason->setPlaceholderText(QStringLiteral("Why it changes"));
    form->addRow(fieldLabel(QStringLiteral("Reason"), m_reason, this),
                 withRefusalLine(m_reason, m_reasonRefusal, this));

    m_history = new QWidget(this);
    auto* history = new QVBoxLayout(m_history);
    history->setContentsMargins(0, 8, 0, 0);
    history->setSpacing(4);
    history->addWidget(headingLabel(QStringLiteral("Correction history"), m_history));
    if (shown.revisions) {
        for (const TransactionRevision& revision : *shown.revisions) {
            history->addWidget(textLabel(toQString(revision.reason), m_history));
            QLabel* before = secondaryLabel(
                QStringLiteral("Before: ") + detailsText(revision.before, shown.currency),
                m_history);
            QLabel* after = secondaryLabel(
                QStringLiteral("After: ") + detailsText(revision.after, shown.currency), m_history);
            history->addWidget(before);
            history->addWidget(after);
        }
    }
    m_history->setVisible(shown.revisions && !shown.revisions->empty());
    body()->addWidget(m_history);

    addCancelButton();
    m_save = addDefaultButton(QStringLiteral("Save Correction"));
    connect(m_save, &QPushButton::clicked, this, &CorrectionSheet::save);
}

QString CorrectionSheet::refusalText() const {
    QStringList words;
    for (const RefusalLine* line :
         {m_lineRefusal, m_dateRefusal, m_amountRefusal, m_descriptionRefusal, m_reasonRefusal}) {
        if (!line->isHidden())
            words.append(line->label()->text());
    }
    return words.join(QLatin1Char('\n'));
}

void CorrectionSheet::showRefusal(const EntryError& error) {
    RefusalLine* line = m_lineRefusal;
    switch (error.kind()) {
        case EntryError::Case::amount:
            line = m_amountRefusal;
            break;
        case EntryError::Case::description:
            line = m_descriptionRefusal;
            break;
        case EntryError::Case::reason:
            line = m_reasonRefusal;
            break;
        default:
            break;
    }
    line->setRefusal(QString::fromUtf8(error.what()));
}

void CorrectionSheet::save() {
    for (RefusalLine* line :
         {m_lineRefusal, m_dateRefusal, m_amountRefusal, m_descriptionRefusal, m_reasonRefusal})
        line->setRefusal({});
    const std::optional<LocalDate> date = LocalDate::fromISO(toStdString(m_date->text().trimmed()));
    if (!date) {
        // The date is the one part of a correction the core can't be asked
        // about, as it never sees one that doesn't read as a day.
        m_dateRefusal->setRefusal(toQString(EntryError::text(EntryError::Case::entryForm)));
        return;
    }
    const std::optional<int64_t> amount = Money::parseCents(toStdString(m_amount->text()));
    if (!amount) {
        showRefusal(EntryError(EntryError::Case::amount));
        return;
    }
    const Instant now = m_runtime.now();
    const LedgerRuntime::Change change = [id = m_id, date = *date, amount = *amount,
                                          description = toStdString(m_description->text()),
                                          reason = toStdString(m_reason->text()),
                                          now](Ledger& ledger) {
        return correctTransaction(ledger, id, date, amount, description, reason, now);
    };
    saveEntryThenClose(m_runtime, change, [this](const EntryError& error) { showRefusal(error); });
}

}  // namespace copperwick::app

#include "app/import/column_mapping_sheet.h"

#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/import/import_analyzer.h"
#include "core/model/date_text.h"
#include "core/model/money.h"

namespace copperwick::app {

namespace {

constexpr std::array<AccountType, 5> kTypes{AccountType::checking, AccountType::savings,
                                            AccountType::creditCard, AccountType::other,
                                            AccountType::cash};
constexpr std::array<SignConvention, 2> kSigns{SignConvention::positiveIsMoneyIn,
                                               SignConvention::positiveIsMoneyOut};
// Enough of the file read with the draft to see which way the money runs.
constexpr std::size_t kPreviewRows = 3;

using Column = ColumnMappingSheet::Column;

std::optional<std::string> choiceOf(const QComboBox* picker) {
    const QVariant data = picker->currentData();
    if (!data.isValid())
        return std::nullopt;
    return toStdString(data.toString());
}

void choose(QComboBox* picker, const std::optional<std::string>& header) {
    const QSignalBlocker blocker(picker);
    const int index = header ? picker->findData(toQString(*header)) : -1;
    picker->setCurrentIndex(index < 0 ? 0 : index);
}

}  // namespace

ColumnMappingSheet::ColumnMappingSheet(RuntimeBridge& bridge, const ImportFile& file,
                                       QWidget* parent)
    : SheetDialog(QStringLiteral("Choose columns"), toQString(kLayoutFormIntro), parent),
      m_bridge(bridge),
      m_fileID(file.id),
      m_fileName(file.url.filename().string()),
      m_data(file.data),
      m_flipSigns(file.flipSigns),
      m_headers(file.analysis.headers),
      m_offered(offeredHeaders(file.analysis)),
      m_name(new QLineEdit(this)),
      m_type(new QComboBox(this)),
      m_split(new QCheckBox(QStringLiteral("Money in and out are in separate columns"), this)),
      m_sign(new QComboBox(this)),
      m_form(addForm()),
      m_preview(textLabel({}, this)),
      m_previewRows(secondaryLabel({}, this)),
      m_save(addDefaultButton(QStringLiteral("Save Layout"))),
      m_cancel(addCancelButton()) {
    keepAtLeastWide(520);
    // What the form asks of the person, rather than a note beside it.
    introLabel()->setForegroundRole(QPalette::WindowText);

    const auto row = [this](const QString& label, QWidget* field) {
        m_form->addRow(fieldLabel(label, field, this), field);
    };
    m_name->setPlaceholderText(QStringLiteral("e.g. Credit union checking"));
    row(QStringLiteral("Layout name"), m_name);
    for (const AccountType type : kTypes)
        m_type->addItem(toQString(label(type)), static_cast<int>(type));
    row(QStringLiteral("Account type"), m_type);

    const QString choose = QStringLiteral("Choose");
    const QString none = QStringLiteral("None");
    m_columns[static_cast<std::size_t>(Column::date)] =
        makeColumnPicker(QStringLiteral("Date"), choose);
    m_columns[static_cast<std::size_t>(Column::description)] =
        makeColumnPicker(QStringLiteral("Description"), choose);
    m_split->setAccessibleName(m_split->text());
    // In the fields' column, under the columns it changes.
    m_form->addRow(static_cast<QWidget*>(nullptr), m_split);
    m_columns[static_cast<std::size_t>(Column::amount)] =
        makeColumnPicker(QStringLiteral("Amount"), choose);
    m_columns[static_cast<std::size_t>(Column::moneyOut)] =
        makeColumnPicker(QStringLiteral("Money out (debit)"), choose);
    m_columns[static_cast<std::size_t>(Column::moneyIn)] =
        makeColumnPicker(QStringLiteral("Money in (credit)"), choose);
    for (const SignConvention sign : kSigns)
        m_sign->addItem(toQString(label(sign)), static_cast<int>(sign));
    row(QStringLiteral("Signs"), m_sign);
    m_columns[static_cast<std::size_t>(Column::postedDate)] =
        makeColumnPicker(QStringLiteral("Posting date (optional)"), none);
    m_columns[static_cast<std::size_t>(Column::status)] =
        makeColumnPicker(QStringLiteral("Status, pending/posted (optional)"), none);
    m_columns[static_cast<std::size_t>(Column::cardholder)] =
        makeColumnPicker(QStringLiteral("Cardholder (optional)"), none);
    m_columns[static_cast<std::size_t>(Column::cardNumber)] =
        makeColumnPicker(QStringLiteral("Card number (optional)"), none);

    body()->addWidget(secondaryLabel(toQString(kLayoutFormHeaderNote), this));
    body()->addWidget(headingLabel(QStringLiteral("Preview"), this));
    m_preview->setWordWrap(true);
    body()->addWidget(m_preview);
    m_previewRows->setWordWrap(false);
    body()->addWidget(m_previewRows);
    body()->addStretch(1);

    connect(m_save, &QPushButton::clicked, this, &ColumnMappingSheet::save);

    LayoutDraft start = preselect(file.analysis, file.proposedProfile);
    if (start.name.empty()) {
        const auto dot = m_fileName.find('.');
        start.name = m_fileName.substr(0, dot);
    }
    m_kept = start;
    showDraft(start);

    connect(m_name, &QLineEdit::textEdited, this, &ColumnMappingSheet::formChanged);
    connect(m_type, &QComboBox::currentIndexChanged, this, &ColumnMappingSheet::formChanged);
    connect(m_split, &QCheckBox::toggled, this, &ColumnMappingSheet::formChanged);
    connect(m_sign, &QComboBox::currentIndexChanged, this, &ColumnMappingSheet::formChanged);
    for (QComboBox* picker : m_columns)
        connect(picker, &QComboBox::currentIndexChanged, this, &ColumnMappingSheet::formChanged);
    formChanged();
}

// Waits for a reading still running; its result is never shown.
ColumnMappingSheet::~ColumnMappingSheet() = default;

QComboBox* ColumnMappingSheet::makeColumnPicker(const QString& name, const QString& empty) {
    auto* picker = new QComboBox(this);
    picker->addItem(empty);
    for (const auto& header : m_offered)
        picker->addItem(toQString(header), toQString(header));
    m_form->addRow(fieldLabel(name, picker, this), picker);
    return picker;
}

void ColumnMappingSheet::showDraft(const LayoutDraft& draft) {
    m_name->setText(toQString(draft.name));
    {
        const QSignalBlocker blocker(m_type);
        m_type->setCurrentIndex(std::max(0, m_type->findData(static_cast<int>(draft.accountType))));
    }
    {
        const QSignalBlocker blocker(m_split);
        m_split->setChecked(draft.splitMode);
    }
    {
        const QSignalBlocker blocker(m_sign);
        m_sign->setCurrentIndex(
            std::max(0, m_sign->findData(static_cast<int>(draft.signConvention))));
    }
    choose(columnPicker(Column::date), draft.dateColumn);
    choose(columnPicker(Column::description), draft.descriptionColumn);
    choose(columnPicker(Column::amount), draft.amountColumn);
    choose(columnPicker(Column::moneyOut), draft.debitColumn);
    choose(columnPicker(Column::moneyIn), draft.creditColumn);
    choose(columnPicker(Column::postedDate), draft.postedDateColumn);
    choose(columnPicker(Column::status), draft.statusColumn);
    choose(columnPicker(Column::cardholder), draft.cardholderColumn);
    choose(columnPicker(Column::cardNumber), draft.cardNumberColumn);
}

LayoutDraft ColumnMappingSheet::draft() const {
    LayoutDraft draft;
    draft.name = toStdString(m_name->text());
    draft.accountType = static_cast<AccountType>(m_type->currentData().toInt());
    draft.dateColumn = choiceOf(columnPicker(Column::date));
    draft.descriptionColumn = choiceOf(columnPicker(Column::description));
    draft.amountColumn = choiceOf(columnPicker(Column::amount));
    draft.debitColumn = choiceOf(columnPicker(Column::moneyOut));
    draft.creditColumn = choiceOf(columnPicker(Column::moneyIn));
    draft.postedDateColumn = choiceOf(columnPicker(Column::postedDate));
    draft.statusColumn = choiceOf(columnPicker(Column::status));
    draft.cardholderColumn = choiceOf(columnPicker(Column::cardholder));
    draft.cardNumberColumn = choiceOf(columnPicker(Column::cardNumber));
    draft.splitMode = m_split->isChecked();
    draft.signConvention = static_cast<SignConvention>(m_sign->currentData().toInt());
    draft.numberStyle = m_kept.numberStyle;
    draft.signMarkerColumn = m_kept.signMarkerColumn;
    draft.moneyOutMarkers = m_kept.moneyOutMarkers;
    return draft;
}

void ColumnMappingSheet::formChanged() {
    const bool split = m_split->isChecked();
    m_form->setRowVisible(columnPicker(Column::amount), !split);
    m_form->setRowVisible(m_sign, !split);
    m_form->setRowVisible(columnPicker(Column::moneyOut), split);
    m_form->setRowVisible(columnPicker(Column::moneyIn), split);

    const LayoutDraft current = draft();
    const bool complete = isComplete(current);
    m_save->setEnabled(complete);
    const uint64_t generation = ++m_previewGeneration;
    if (!complete) {
        setLabelText(m_preview, {});
        setLabelText(m_previewRows, {});
        return;
    }
    if (!m_work)
        m_work = std::make_unique<BackgroundWork>(m_bridge.runtime().mainQueue());
    m_work->run(
        [data = m_data, name = m_fileName, flip = m_flipSigns,
         profile = buildProfile(current, m_headers)]() {
            const FileAnalysis analysis = ImportAnalyzer::analyze(name, *data, profile, flip);
            Preview preview{static_cast<int>(analysis.rows.size()),
                            static_cast<int>(analysis.issues.size()),
                            {}};
            const std::string currency = analysis.currencyHint.value_or("USD");
            for (std::size_t i = 0; i < analysis.rows.size() && i < kPreviewRows; ++i) {
                const ParsedRow& row = analysis.rows[i];
                preview.firstRows.push_back(DateText::medium(row.date) + " · " +
                                            std::string(row.description()) + " · " +
                                            Money::format(row.amount, currency));
            }
            return preview;
        },
        [this, generation](WorkResult<Preview> result) {
            if (generation != m_previewGeneration || !result.value)
                return;
            setLabelText(m_preview,
                         toQString(previewText(result.value->rows, result.value->issues)));
            QStringList rows;
            for (const auto& line : result.value->firstRows)
                rows.append(toQString(line));
            setLabelText(m_previewRows, rows.join(QLatin1Char('\n')));
        });
}

void ColumnMappingSheet::save() {
    const LayoutDraft current = draft();
    if (!isComplete(current))
        return;
    m_bridge.importer().applyMapping(buildProfile(current, m_headers), m_fileID,
                                     m_bridge.runtime());
    accept();
}

}  // namespace copperwick::app

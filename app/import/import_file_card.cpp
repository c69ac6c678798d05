#include "app/import/import_file_card.h"

#include <array>

#include <QGridLayout>
#include <QHBoxLayout>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/widgets/enter_presses.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_icons.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

const QString kChoose = QStringLiteral("Choose");
const QString kNewAccount = QStringLiteral("New account");
const QString kNewKey = QStringLiteral("new");
const QString kNobody = QStringLiteral("Nobody in particular");
const QString kRemoveHelp = QStringLiteral("Remove this file from the list");
const QString kFlipNote = QStringLiteral(
    "Check the preview: purchases should be money out. If they show as money in, turn this on. "
    "It's remembered for this account.");

// A new account from an import holds bank lines; a cash wallet is kept by hand.
constexpr std::array<AccountType, 4> kDraftTypes{AccountType::checking, AccountType::savings,
                                                 AccountType::creditCard, AccountType::other};

// The currency the plan's money is in: the chosen account's, else the file's own.
std::string planCurrency(const ImportFile& file, const Ledger& ledger) {
    if (file.choice.kind == ImportFile::AccountChoice::Kind::existing) {
        if (const auto* account = ledger.account(file.choice.accountID))
            return account->currency;
    }
    return file.analysis.currencyHint.value_or(ledger.settings->reportCurrency);
}

}  // namespace

ImportFileCard::ImportFileCard(RuntimeBridge& bridge, const Uuid& fileID, QWidget* parent)
    : CardFrame(parent),
      m_bridge(bridge),
      m_fileID(fileID),
      m_fileName(new ElidedLabel(this)),
      m_layout(secondaryLabel({}, this)),
      m_workedOut(secondaryLabel({}, this)),
      m_include(new QCheckBox(QStringLiteral("Include"), this)),
      m_remove(new QToolButton(this)),
      m_body(new QWidget(this)),
      m_unrecognized(new QWidget(m_body)),
      m_chooseColumns(pushButton(QStringLiteral("Choose Columns…"), m_unrecognized)),
      m_askLocalAI(pushButton(QStringLiteral("Ask Local AI"), m_unrecognized)),
      m_help(new QWidget(m_body)),
      m_helpSymbol(new SymbolView("sparkles", 16, m_help)),
      m_helpText(textLabel({}, m_help)),
      m_chooseMyself(pushButton(QStringLiteral("Choose Columns Myself…"), m_help)),
      m_account(new QComboBox(m_body)),
      m_draftForm(new QWidget(m_body)),
      m_name(new QLineEdit(m_draftForm)),
      m_owner(new QComboBox(m_draftForm)),
      m_type(new QComboBox(m_draftForm)),
      m_lastFour(new QLineEdit(m_draftForm)),
      m_shared(new QCheckBox(QStringLiteral("Shared"), m_draftForm)),
      m_suggestion(secondaryLabel({}, m_body)),
      m_blocker(new QWidget(m_body)),
      m_blockerText(textLabel({}, m_blocker)),
      m_flipRow(new QWidget(m_body)),
      m_flip(new QCheckBox(QStringLiteral("This bank shows purchases the other way around"),
                           m_flipRow)),
      m_summary(new ImportPlanSummary(m_body)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kCardMargins);
    layout->setSpacing(12);
    layout->addWidget(makeHeader());

    auto* body = new QVBoxLayout(m_body);
    body->setContentsMargins(0, 0, 0, 0);
    body->setSpacing(10);

    // An unrecognised file: the person's own columns, or Local AI's reading.
    auto* unrecognized = new QHBoxLayout(m_unrecognized);
    unrecognized->setContentsMargins(0, 0, 0, 0);
    unrecognized->setSpacing(8);
    unrecognized->addWidget(m_chooseColumns);
    unrecognized->addWidget(m_askLocalAI);
    unrecognized->addStretch(1);
    body->addWidget(m_unrecognized);

    // What Local AI is doing with the columns, or what came of it.
    auto* help = new QVBoxLayout(m_help);
    help->setContentsMargins(0, 0, 0, 0);
    help->setSpacing(6);
    auto* helpLine = new QHBoxLayout;
    helpLine->setSpacing(8);
    helpLine->addWidget(m_helpSymbol, 0, Qt::AlignTop);
    m_helpText->setWordWrap(true);
    helpLine->addWidget(m_helpText, 1);
    help->addLayout(helpLine);
    help->addWidget(m_chooseMyself, 0, Qt::AlignLeft);
    m_help->hide();
    body->addWidget(m_help);

    auto* accountRow = new QHBoxLayout;
    accountRow->setSpacing(10);
    accountRow->addWidget(fieldLabel(QStringLiteral("Account"), m_account, m_body));
    m_account->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_account->setMinimumContentsLength(18);
    accountRow->addWidget(m_account);
    accountRow->addStretch(1);
    body->addLayout(accountRow);
    body->addWidget(makeDraftForm());
    body->addWidget(m_suggestion);

    auto* blocker = new QHBoxLayout(m_blocker);
    blocker->setContentsMargins(0, 0, 0, 0);
    blocker->setSpacing(8);
    blocker->addWidget(new SymbolView("hand.raised", 16, m_blocker), 0, Qt::AlignTop);
    QFont strong = m_blockerText->font();
    strong.setWeight(QFont::DemiBold);
    m_blockerText->setFont(strong);
    m_blockerText->setWordWrap(true);
    blocker->addWidget(m_blockerText, 1);
    body->addWidget(m_blocker);

    auto* flip = new QVBoxLayout(m_flipRow);
    flip->setContentsMargins(0, 0, 0, 0);
    flip->setSpacing(2);
    m_flip->setAccessibleName(m_flip->text());
    flip->addWidget(m_flip);
    QLabel* flipNote = secondaryLabel(kFlipNote, m_flipRow);
    flipNote->setContentsMargins(24, 0, 0, 0);
    flip->addWidget(flipNote);
    body->addWidget(m_flipRow);

    m_summary->setVisible(false);
    body->addWidget(m_summary);
    layout->addWidget(m_body);

    ImportModel& importer = m_bridge.importer();
    connect(m_include, &QCheckBox::toggled, this,
            [this, &importer](bool on) { importer.setInclude(on, m_fileID); });
    connect(m_remove, &QToolButton::clicked, this, [this, &importer] {
        // The model drops the card; the page lets it go once this click is over.
        importer.remove(m_fileID);
    });
    connect(m_chooseColumns, &QPushButton::clicked, this,
            [this, &importer] { importer.setMappingFileID(m_fileID); });
    connect(m_chooseMyself, &QPushButton::clicked, this,
            [this, &importer] { importer.setMappingFileID(m_fileID); });
    connect(m_askLocalAI, &QPushButton::clicked, this,
            [this, &importer] { importer.setUpLayout(m_fileID, m_bridge.runtime()); });
    // The switch may change in Settings while the file waits here.
    connect(&m_bridge, &RuntimeBridge::intelligenceChanged, this, [this, &importer] {
        if (const ImportFile* file = importer.file(m_fileID))
            showLayoutHelp(*file);
    });
    connect(m_account, &QComboBox::activated, this, &ImportFileCard::chooseAccount);
    connect(m_flip, &QCheckBox::toggled, this,
            [this, &importer](bool on) { importer.setFlip(on, m_fileID, m_bridge.runtime()); });
    connect(m_summary, &ImportPlanSummary::forcedLinesChanged, this,
            [this, &importer](const std::set<int64_t>& lines) {
                importer.setForcedLines(lines, m_fileID);
            });
    connect(m_summary, &ImportPlanSummary::skipProblemRowsChanged, this,
            [this, &importer](bool skip) { importer.setSkipProblemRows(skip, m_fileID); });
}

QWidget* ImportFileCard::makeHeader() {
    auto* header = new QWidget(this);
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(10);
    row->addWidget(new SymbolView("doc.text", 28, header), 0, Qt::AlignTop);

    auto* names = new QVBoxLayout;
    names->setSpacing(1);
    QFont title = m_fileName->font();
    title.setWeight(QFont::DemiBold);
    title.setPointSizeF(title.pointSizeF() * 1.08);
    m_fileName->setFont(title);
    names->addWidget(m_fileName);
    m_layout->setWordWrap(false);
    names->addWidget(m_layout);
    m_workedOut->setWordWrap(true);
    m_workedOut->setVisible(false);
    names->addWidget(m_workedOut);
    row->addLayout(names, 1);

    m_include->setAccessibleName(m_include->text());
    row->addWidget(m_include, 0, Qt::AlignTop);
    m_remove->setIcon(symbolIcon("xmark.circle.fill"));
    m_remove->setIconSize({18, 18});
    m_remove->setAutoRaise(true);
    m_remove->setToolTip(kRemoveHelp);
    m_remove->setAccessibleName(kRemoveHelp);
    pressOnEnter(m_remove);
    row->addWidget(m_remove, 0, Qt::AlignTop);
    return header;
}

QWidget* ImportFileCard::makeDraftForm() {
    auto* grid = new QGridLayout(m_draftForm);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(8);
    grid->addWidget(fieldLabel(QStringLiteral("Name"), m_name, m_draftForm), 0, 0);
    grid->addWidget(m_name, 0, 1);
    grid->addWidget(fieldLabel(QStringLiteral("Owner"), m_owner, m_draftForm), 0, 2);
    grid->addWidget(m_owner, 0, 3);
    grid->addWidget(fieldLabel(QStringLiteral("Type"), m_type, m_draftForm), 1, 0);
    grid->addWidget(m_type, 1, 1);
    grid->addWidget(fieldLabel(QStringLiteral("Last four"), m_lastFour, m_draftForm), 1, 2);
    auto* lastFourRow = new QHBoxLayout;
    lastFourRow->setSpacing(16);
    m_lastFour->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,4}")), this));
    m_lastFour->setMaximumWidth(
        m_lastFour->fontMetrics().horizontalAdvance(QStringLiteral("0")) * 8 + 16);
    lastFourRow->addWidget(m_lastFour);
    m_shared->setAccessibleName(m_shared->text());
    lastFourRow->addWidget(m_shared);
    lastFourRow->addStretch(1);
    grid->addLayout(lastFourRow, 1, 3);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    for (const AccountType type : kDraftTypes)
        m_type->addItem(toQString(label(type)), static_cast<int>(type));

    connect(m_name, &QLineEdit::textEdited, this, [this](const QString& text) {
        editDraft([&](ImportFile::NewAccountDraft& draft) { draft.name = toStdString(text); });
    });
    connect(m_lastFour, &QLineEdit::textEdited, this, [this](const QString& text) {
        editDraft([&](ImportFile::NewAccountDraft& draft) { draft.last4 = toStdString(text); });
    });
    connect(m_type, &QComboBox::activated, this, [this](int index) {
        const auto type = static_cast<AccountType>(m_type->itemData(index).toInt());
        editDraft([&](ImportFile::NewAccountDraft& draft) { draft.type = type; });
    });
    connect(m_owner, &QComboBox::activated, this, [this](int index) {
        const auto person = Uuid::parse(toStdString(m_owner->itemData(index).toString()));
        editDraft([&](ImportFile::NewAccountDraft& draft) { draft.personID = person; });
    });
    connect(m_shared, &QCheckBox::toggled, this, [this](bool shared) {
        editDraft([&](ImportFile::NewAccountDraft& draft) { draft.isShared = shared; });
    });
    m_draftForm->setVisible(false);
    return m_draftForm;
}

QString ImportFileCard::blockerText() const {
    return m_blocker->isHidden() ? QString() : m_blockerText->text();
}

void ImportFileCard::setFile(const ImportFile& file) {
    const Ledger& ledger = m_bridge.runtime().ledger();
    m_fileName->setFullText(toQString(file.name()));
    const auto& profile = file.analysis.profile;
    setLabelText(m_layout, profile ? QStringLiteral("Layout: ") + toQString(profile->name)
                                   : QStringLiteral("Layout not recognized"));
    {
        const QSignalBlocker blocker(m_include);
        m_include->setChecked(file.include);
    }
    m_body->setEnabled(file.include);
    showLayoutHelp(file);
    m_workedOut->setVisible(profile && file.analysis.layoutWorkedOut);
    if (file.analysis.layoutWorkedOut)
        setLabelText(m_workedOut, toQString(*file.analysis.layoutWorkedOut));

    fillAccounts(ledger);
    fillPeople(ledger);
    showChoice(file);
    showDraft(file.draft);

    m_suggestion->setVisible(file.suggestionReason.has_value());
    if (file.suggestionReason)
        setLabelText(m_suggestion, toQString(*file.suggestionReason));
    const auto blocker = file.blocker();
    m_blocker->setVisible(blocker.has_value());
    if (blocker)
        setLabelText(m_blockerText, toQString(*blocker));

    m_flipRow->setVisible(profile.has_value());
    {
        const QSignalBlocker flipSignals(m_flip);
        m_flip->setChecked(file.flipSigns);
    }

    m_summary->setVisible(file.plan.has_value());
    if (file.plan)
        m_summary->setFile(file, ledger, planCurrency(file, ledger));
}

void ImportFileCard::showLayoutHelp(const ImportFile& file) {
    using Kind = ImportFile::LayoutHelp::Kind;
    const ImportFile::LayoutHelp& help = file.layoutHelp;
    const bool working = help.kind == Kind::working;
    const bool recognized = file.analysis.profile.has_value();
    m_unrecognized->setVisible(!recognized && !working);
    m_askLocalAI->setVisible(m_bridge.intelligence().switches().enabled);
    // A layout Copperwick worked out itself is told in the header already.
    const bool toldAbove =
        file.analysis.layoutWorkedOut && help.text == *file.analysis.layoutWorkedOut;
    const bool shows = working || ((help.kind == Kind::done || help.kind == Kind::failed) &&
                                   !help.text.empty() && !toldAbove);
    m_help->setVisible(shows);
    m_chooseMyself->setVisible(working);
    if (!shows)
        return;
    m_helpSymbol->setSymbol(help.kind == Kind::failed ? "hand.raised" : "sparkles");
    setLabelText(
        m_helpText,
        working
            ? QStringLiteral("Local AI is working out this file's columns, on this computer\u2026")
            : toQString(help.text));
}

void ImportFileCard::fillAccounts(const Ledger& ledger) {
    std::vector<std::pair<Uuid, std::string>> accounts;
    for (const auto& account : ledger.accounts) {
        if (!account.isArchived && account.type != AccountType::cash)
            accounts.emplace_back(account.id, account.name);
    }
    if (accounts == m_accountsShown && m_account->count() > 0)
        return;
    const QSignalBlocker blocker(m_account);
    m_account->clear();
    m_account->addItem(kChoose, QString());
    for (const auto& [id, name] : accounts)
        m_account->addItem(toQString(name), toQString(id.text()));
    m_account->addItem(kNewAccount, kNewKey);
    m_accountsShown = std::move(accounts);
}

void ImportFileCard::fillPeople(const Ledger& ledger) {
    std::vector<std::pair<Uuid, std::string>> people;
    for (const auto& person : ledger.people)
        people.emplace_back(person.id, person.name);
    if (people == m_peopleShown && m_owner->count() > 0)
        return;
    const QSignalBlocker blocker(m_owner);
    m_owner->clear();
    for (const auto& [id, name] : people)
        m_owner->addItem(toQString(name), toQString(id.text()));
    m_owner->addItem(kNobody, QString());
    m_peopleShown = std::move(people);
}

void ImportFileCard::showChoice(const ImportFile& file) {
    QString key;
    switch (file.choice.kind) {
        case ImportFile::AccountChoice::Kind::existing:
            key = file.choice.accountID ? toQString(file.choice.accountID->text()) : QString();
            break;
        case ImportFile::AccountChoice::Kind::newAccount:
            key = kNewKey;
            break;
        case ImportFile::AccountChoice::Kind::undecided:
            break;
    }
    const QSignalBlocker blocker(m_account);
    // An account since archived isn't offered; the picker then asks again.
    const int index = m_account->findData(key);
    m_account->setCurrentIndex(index < 0 ? 0 : index);
    m_draftForm->setVisible(file.choice.kind == ImportFile::AccountChoice::Kind::newAccount);
}

void ImportFileCard::showDraft(const ImportFile::NewAccountDraft& draft) {
    // What the person is typing is the draft already; a field with the focus
    // is left alone so that its cursor and selection stay where they are.
    const QString name = toQString(draft.name);
    if (m_name->text() != name && !m_name->hasFocus())
        m_name->setText(name);
    const QString lastFour = toQString(draft.last4);
    if (m_lastFour->text() != lastFour && !m_lastFour->hasFocus())
        m_lastFour->setText(lastFour);
    const QSignalBlocker typeSignals(m_type);
    m_type->setCurrentIndex(std::max(0, m_type->findData(static_cast<int>(draft.type))));
    const QSignalBlocker ownerSignals(m_owner);
    const QString owner = draft.personID ? toQString(draft.personID->text()) : QString();
    m_owner->setCurrentIndex(std::max(0, m_owner->findData(owner)));
    m_owner->setEnabled(!draft.isShared);
    const QSignalBlocker sharedSignals(m_shared);
    m_shared->setChecked(draft.isShared);
}

void ImportFileCard::chooseAccount(int index) {
    const QString key = m_account->itemData(index).toString();
    ImportFile::AccountChoice choice = ImportFile::AccountChoice::undecided();
    if (key == kNewKey) {
        choice = ImportFile::AccountChoice::newAccount();
    } else if (const auto id = Uuid::parse(toStdString(key))) {
        choice = ImportFile::AccountChoice::existing(*id);
    }
    m_bridge.importer().setChoice(choice, m_fileID, m_bridge.runtime());
}

void ImportFileCard::editDraft(const std::function<void(ImportFile::NewAccountDraft&)>& change) {
    const ImportFile* file = m_bridge.importer().file(m_fileID);
    if (!file)
        return;
    ImportFile::NewAccountDraft draft = file->draft;
    change(draft);
    m_bridge.importer().setDraft(std::move(draft), m_fileID);
}

}  // namespace copperwick::app

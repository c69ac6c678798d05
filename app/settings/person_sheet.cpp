#include "app/settings/person_sheet.h"

#include <QFormLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/money.h"
#include "core/operations/entry_error.h"
#include "core/operations/record_maintenance.h"

namespace copperwick::app {

PersonSheet::PersonSheet(RuntimeBridge& bridge, const std::optional<Uuid>& personID,
                         QWidget* parent)
    : SheetDialog(personID ? QStringLiteral("Edit Person") : QStringLiteral("New Person"),
                  QStringLiteral("The names banks print let Copperwick tell whose payment a "
                                 "line is."),
                  parent),
      m_bridge(bridge) {
    setModal(true);
    keepAtLeastWide(480);
    const Person* known = personID ? m_bridge.runtime().ledger().person(personID) : nullptr;
    m_person = known ? *known : Person{.id = Uuid::random()};

    QFormLayout* form = addForm();
    form->setVerticalSpacing(10);
    m_name = new QLineEdit(toQString(m_person.name), this);
    form->addRow(fieldLabel(QStringLiteral("Name"), m_name, this),
                 withRefusalLine(m_name, m_nameRefusal, this));
    QStringList bankNames;
    for (const auto& name : m_person.bankNames)
        bankNames << toQString(name);
    m_bankNames = new QLineEdit(bankNames.join(QStringLiteral(", ")), this);
    m_bankNames->setPlaceholderText(QStringLiteral("Separated by commas"));
    form->addRow(fieldLabel(QStringLiteral("Names banks print"), m_bankNames, this), m_bankNames);
    m_allowance = new QLineEdit(this);
    if (m_person.monthlyAllowance)
        m_allowance->setText(toQString(Money::decimalString(*m_person.monthlyAllowance)));
    m_allowance->setPlaceholderText(QStringLiteral("Optional monthly amount"));
    form->addRow(fieldLabel(QStringLiteral("Monthly spending allowance"), m_allowance, this),
                 withRefusalLine(m_allowance, m_allowanceRefusal, this));

    m_save = addDefaultButton(QStringLiteral("Save"));
    addCancelButton();
    connect(m_save, &QPushButton::clicked, this, &PersonSheet::save);
    connect(m_allowance, &QLineEdit::textChanged, this, [this] { (void)checked(false); });
    m_name->setFocus();
}

std::optional<Person> PersonSheet::checked(bool showRefusals) {
    Person person = m_person;
    person.name = toStdString(m_name->text());
    person.bankNames.clear();
    for (const QString& name : m_bankNames->text().split(QLatin1Char(',')))
        person.bankNames.push_back(toStdString(name));
    QString allowanceRefusal;
    try {
        person.monthlyAllowance = allowanceEntered(toStdString(m_allowance->text()));
    } catch (const EntryError& refusal) {
        allowanceRefusal = QString::fromUtf8(refusal.what());
    }
    m_allowanceRefusal->setRefusal(allowanceRefusal);
    QString nameRefusal;
    std::optional<Person> entered;
    try {
        entered = personEntered(std::move(person));
    } catch (const EntryError& refusal) {
        if (refusal.kind() == EntryError::Case::name)
            nameRefusal = QString::fromUtf8(refusal.what());
        else if (allowanceRefusal.isEmpty())
            m_allowanceRefusal->setRefusal(QString::fromUtf8(refusal.what()));
    }
    if (showRefusals || nameRefusal.isEmpty())
        m_nameRefusal->setRefusal(nameRefusal);
    if (!allowanceRefusal.isEmpty())
        return std::nullopt;
    return entered;
}

void PersonSheet::save() {
    const auto person = checked(true);
    if (!person) {
        // An allowance that can't be kept is said in the message bar as well.
        if (!m_allowanceRefusal->isHidden())
            m_bridge.runtime().setErrorMessage(toStdString(m_allowanceRefusal->label()->text()));
        return;
    }
    saveThenClose(m_bridge.runtime(),
                  [person = *person](Ledger& copy) -> std::optional<LedgerDelta> {
                      return upsertPerson(copy, person);
                  });
}

}  // namespace copperwick::app

#include "app/settings/category_sheets.h"
#include "app/widgets/chart_colours.h"

#include <QFormLayout>
#include <QPixmap>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/operations/entry_error.h"
#include "core/operations/record_maintenance.h"
#include "core/operations/upsert_category.h"

namespace copperwick::app {

namespace {

QIcon swatch(const QColor& colour) {
    QPixmap pixmap(14, 14);
    pixmap.fill(colour);
    return QIcon(pixmap);
}

}  // namespace

CategorySheet::CategorySheet(RuntimeBridge& bridge, const std::optional<Uuid>& categoryID,
                             CategoryGroup group, QWidget* parent)
    : SheetDialog(categoryID ? QStringLiteral("Edit Category") : QStringLiteral("New Category"), {},
                  parent),
      m_bridge(bridge) {
    setModal(true);
    keepAtLeastWide(440);
    const Ledger& ledger = m_bridge.runtime().ledger();
    const LedgerCategory* known = categoryID ? ledger.category(categoryID) : nullptr;
    m_category = known ? *known : newCategory(ledger, {}, group);

    QFormLayout* form = addForm();
    form->setVerticalSpacing(10);
    m_name = new QLineEdit(toQString(m_category.name), this);
    form->addRow(fieldLabel(QStringLiteral("Name"), m_name, this),
                 withRefusalLine(m_name, m_nameRefusal, this));
    m_group = new QComboBox(this);
    m_group->addItem(QStringLiteral("Spending"), static_cast<int>(CategoryGroup::expense));
    m_group->addItem(QStringLiteral("Income"), static_cast<int>(CategoryGroup::income));
    m_group->setCurrentIndex(m_group->findData(static_cast<int>(m_category.group)));
    // A known category keeps its group: what is filed under it stays as filed.
    m_group->setEnabled(!known);
    form->addRow(fieldLabel(QStringLiteral("Group"), m_group, this), m_group);
    m_colour = new QComboBox(this);
    for (int index = 0; index < kCategoryColours; ++index)
        m_colour->addItem(swatch(categoryColour(palette(), index)),
                          QStringLiteral("Colour %1").arg(index + 1), index);
    m_colour->setCurrentIndex(std::clamp(m_category.colorIndex, 0, kCategoryColours - 1));
    form->addRow(fieldLabel(QStringLiteral("Colour"), m_colour, this), m_colour);

    m_save = addDefaultButton(QStringLiteral("Save"));
    addCancelButton();
    connect(m_save, &QPushButton::clicked, this, &CategorySheet::save);
    connect(m_name, &QLineEdit::textChanged, this, [this] { (void)checked(); });
    connect(m_group, &QComboBox::currentIndexChanged, this, [this] {
        if (m_category.name.empty() || m_name->text().isEmpty()) {
            const auto chosen = static_cast<CategoryGroup>(m_group->currentData().toInt());
            m_colour->setCurrentIndex(
                std::clamp(newCategory(m_bridge.runtime().ledger(), {}, chosen).colorIndex, 0,
                           kCategoryColours - 1));
        }
    });
    m_name->setFocus();
}

std::optional<LedgerCategory> CategorySheet::checked() {
    LedgerCategory category = m_category;
    category.name = toStdString(m_name->text());
    category.group = static_cast<CategoryGroup>(m_group->currentData().toInt());
    category.colorIndex = m_colour->currentData().toInt();
    try {
        auto entered = categoryEntered(m_bridge.runtime().ledger(), std::move(category));
        m_nameRefusal->setRefusal({});
        return entered;
    } catch (const EntryError& refusal) {
        m_nameRefusal->setRefusal(QString::fromUtf8(refusal.what()));
        return std::nullopt;
    }
}

void CategorySheet::save() {
    const auto category = checked();
    if (!category)
        return;
    saveThenClose(m_bridge.runtime(),
                  [category = *category](Ledger& copy) -> std::optional<LedgerDelta> {
                      return upsertCategory(copy, category);
                  });
}

DeleteCategorySheet::DeleteCategorySheet(RuntimeBridge& bridge, const Uuid& categoryID,
                                         QWidget* parent)
    : SheetDialog(QStringLiteral("Delete Category"),
                  QStringLiteral("Its transactions, rules and merchants move to the category you "
                                 "choose. With none, its transactions go back to Review. Its "
                                 "budget is removed."),
                  parent),
      m_bridge(bridge),
      m_categoryID(categoryID) {
    setModal(true);
    keepAtLeastWide(480);
    const Ledger& ledger = m_bridge.runtime().ledger();
    QFormLayout* form = addForm();
    if (const LedgerCategory* category = ledger.category(categoryID))
        form->addRow(textLabel(QStringLiteral("Category"), this),
                     headingLabel(toQString(category->name), this));
    m_replacement = new QComboBox(this);
    m_replacement->addItem(QStringLiteral("None: back to Review"), QString());
    for (const LedgerCategory& other : ledger.categories) {
        if (other.id != categoryID)
            m_replacement->addItem(swatch(categoryColour(palette(), other.colorIndex)),
                                   toQString(other.name), toQString(other.id.text()));
    }
    form->addRow(fieldLabel(QStringLiteral("Move to"), m_replacement, this), m_replacement);
    m_delete = addDefaultButton(QStringLiteral("Delete Category"));
    addCancelButton();
    connect(m_delete, &QPushButton::clicked, this, &DeleteCategorySheet::remove);
    m_replacement->setFocus();
}

void DeleteCategorySheet::remove() {
    std::optional<Uuid> replacement;
    if (const QString data = m_replacement->currentData().toString(); !data.isEmpty())
        replacement = Uuid::parse(toStdString(data));
    saveThenClose(m_bridge.runtime(),
                  [id = m_categoryID, replacement](Ledger& copy) -> std::optional<LedgerDelta> {
                      return deleteCategory(copy, id, replacement);
                  });
}

}  // namespace copperwick::app

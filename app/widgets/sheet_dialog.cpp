#include "app/widgets/sheet_dialog.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <QPointer>

#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

constexpr qreal kTitleScale = 1.3;

}  // namespace

SheetDialog::SheetDialog(const QString& title, const QString& intro, QWidget* parent)
    : QDialog(parent),
      m_title(headingLabel(title, this, kTitleScale)),
      m_intro(secondaryLabel(intro, this)),
      m_width(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Fixed)),
      m_body(new QVBoxLayout),
      m_lead(new QHBoxLayout),
      m_trail(new QHBoxLayout) {
    setWindowTitle(title);
    setAccessibleName(title);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(12);
    layout->addWidget(m_title);
    m_intro->setVisible(!intro.isEmpty());
    layout->addWidget(m_intro);
    m_body->setContentsMargins(0, 0, 0, 0);
    m_body->setSpacing(12);
    layout->addLayout(m_body, 1);

    auto* foot = new QHBoxLayout;
    foot->setContentsMargins(0, 8, 0, 0);
    foot->setSpacing(8);
    m_lead->setSpacing(8);
    m_trail->setSpacing(8);
    foot->addLayout(m_lead);
    foot->addStretch(1);
    foot->addLayout(m_trail);
    layout->addLayout(foot);
    layout->addItem(m_width);
}

void SheetDialog::keepAtLeastWide(int width) {
    const QMargins margins = layout()->contentsMargins();
    m_width->changeSize(std::max(0, width - margins.left() - margins.right()), 0,
                        QSizePolicy::Minimum, QSizePolicy::Fixed);
    layout()->invalidate();
}

QFormLayout* SheetDialog::addForm() {
    auto* form = new QFormLayout;
    form->setContentsMargins(0, 4, 0, 0);
    form->setHorizontalSpacing(14);
    form->setVerticalSpacing(8);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_body->addLayout(form);
    return form;
}

QPushButton* SheetDialog::addDefaultButton(const QString& text) {
    QPushButton* button = pushButton(text, this);
    button->setDefault(true);
    m_trail->addWidget(button);
    return button;
}

QPushButton* SheetDialog::addCancelButton(const QString& text) {
    QPushButton* button = pushButton(text, this);
    // Before the default button, wherever that already stands.
    m_trail->insertWidget(0, button);
    connect(button, &QPushButton::clicked, this, &QDialog::reject);
    return button;
}

QPushButton* SheetDialog::addFootButton(const QString& text) {
    QPushButton* button = pushButton(text, this);
    m_lead->addWidget(button);
    return button;
}

void SheetDialog::orderTabsAsLaidOut() {
    orderTabs({this});
}

void SheetDialog::showEvent(QShowEvent* event) {
    orderTabsAsLaidOut();
    QDialog::showEvent(event);
}

QHBoxLayout* fieldRowLayout(QWidget* box) {
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    return layout;
}

QWidget* withRefusalLine(QWidget* field, RefusalLine*& refusal, QWidget* parent) {
    auto* box = new QWidget(parent);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    field->setParent(box);
    layout->addWidget(field);
    refusal = new RefusalLine(box);
    layout->addWidget(refusal);
    return box;
}

void SheetDialog::saveThenClose(LedgerRuntime& runtime, LedgerRuntime::PossibleChange change) {
    waitFor(
        [&runtime, &change, this](std::function<void(const ApplyResult&)> done) {
            runtime.applyForScreen(std::move(change), std::move(done), m_saveInBackgroundFrom);
        },
        [this](const ApplyResult& result) {
            if (!result.message)
                accept();
        });
}

void SheetDialog::saveEntryThenClose(LedgerRuntime& runtime, LedgerRuntime::Change change,
                                     std::function<void(const EntryError&)> refused) {
    waitFor(
        [&runtime, &change, this](std::function<void(const ApplyResult&)> done) {
            runtime.commitEntryForScreen(std::move(change), std::move(done),
                                         m_saveInBackgroundFrom);
        },
        [this, refused = std::move(refused)](const ApplyResult& result) {
            if (result.refusal)
                refused(*result.refusal);
            else if (!result.message)
                accept();
        });
}

void SheetDialog::waitFor(const std::function<void(std::function<void(const ApplyResult&)>)>& save,
                          std::function<void(const ApplyResult&)> settled) {
    auto told = std::make_shared<bool>(false);
    save([sheet = QPointer<SheetDialog>(this), told,
          settled = std::move(settled)](const ApplyResult& result) {
        *told = true;
        // Closed by the window manager meanwhile: what was saved stays saved.
        if (!sheet)
            return;
        sheet->setEnabled(true);
        settled(result);
    });
    if (!*told)
        setEnabled(false);
}

SheetDialog::~SheetDialog() {
    stopCounting();
}

void SheetDialog::countAsEntryEditor(LedgerRuntime& runtime) {
    stopCounting();
    m_countedIn = &runtime;
    runtime.setEntryEditorCount(runtime.entryEditorCount() + 1);
}

void SheetDialog::done(int result) {
    stopCounting();
    QDialog::done(result);
}

void SheetDialog::stopCounting() {
    LedgerRuntime* runtime = std::exchange(m_countedIn, nullptr);
    if (runtime)
        runtime->setEntryEditorCount(std::max(0, runtime->entryEditorCount() - 1));
}

}  // namespace copperwick::app

#include "app/import/import_layouts_sheet.h"

#include <QHBoxLayout>
#include <QScrollArea>

#include "app/widgets/saved_change.h"
#include "app/widgets/card_frame.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/import/builtin_profiles.h"
#include "core/import/layout_file.h"
#include "core/operations/upsert_profile.h"

namespace copperwick::app {

namespace {

const QString kTitle = QStringLiteral("Bank file layouts");
const QString kFormats = QStringLiteral(
    "OFX and QFX: single-account checking, savings and credit-card statements. CSV: the layouts "
    "below, plus layouts you teach Copperwick.");
const QString kContents = QStringLiteral(
    "A saved layout contains column mappings, not your transactions. Bank exports can change; "
    "every import still shows a preview.");

QString recognizedText(const ImportProfile& profile) {
    if (profile.requiredHeaders.empty())
        return QStringLiteral("Recognized by its headerless row structure.");
    QStringList headers;
    for (const auto& header : profile.requiredHeaders)
        headers.append(toQString(header));
    return QStringLiteral("Recognized columns: ") + headers.join(QStringLiteral(", "));
}

}  // namespace

ImportLayoutsSheet::ImportLayoutsSheet(RuntimeBridge& bridge, FilePanels panels, QWidget* parent)
    : SheetDialog(kTitle, {}, parent),
      m_bridge(bridge),
      m_panels(std::move(panels)),
      m_search(new QLineEdit(this)),
      m_list(new QWidget),
      m_rows(new QVBoxLayout(m_list)),
      m_refusal(textLabel({}, this)),
      m_import(addFootButton(QStringLiteral("Import Saved Layout…"))),
      m_done(addDefaultButton(QStringLiteral("Done"))) {
    resize(640, 620);
    QVBoxLayout* layout = body();
    layout->setSpacing(10);

    const QString find = QStringLiteral("Find a bank or saved layout");
    m_search->setPlaceholderText(find);
    m_search->setAccessibleName(find);
    m_search->setClearButtonEnabled(true);
    layout->addWidget(m_search);
    layout->addWidget(secondaryLabel(kFormats, this));
    layout->addWidget(secondaryLabel(kContents, this));

    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The rows' buttons take the keyboard, not the area around them.
    scroll->setFocusPolicy(Qt::NoFocus);
    m_rows->setContentsMargins(0, 4, 0, 4);
    m_rows->setSpacing(8);
    scroll->setWidget(m_list);
    layout->addWidget(scroll, 1);

    m_refusal->setWordWrap(true);
    m_refusal->setVisible(false);
    layout->addWidget(m_refusal);

    connect(m_search, &QLineEdit::textChanged, this, &ImportLayoutsSheet::applyFilter);
    connect(m_import, &QPushButton::clicked, this, &ImportLayoutsSheet::importLayout);
    connect(m_done, &QPushButton::clicked, this, &QDialog::accept);
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, [this](const SavedChange& change) {
        if (touches(change, {RecordKind::profile}))
            fill();
    });
    fill();
}

QStringList ImportLayoutsSheet::shownLayouts() const {
    QStringList names;
    for (const auto& row : m_shown) {
        if (!row.widget->isHidden())
            names.append(row.name);
    }
    return names;
}

QPushButton* ImportLayoutsSheet::exportButton(const QString& name) const {
    for (const auto& row : m_shown) {
        if (row.name == name && row.exportButton)
            return row.exportButton;
    }
    return nullptr;
}

void ImportLayoutsSheet::fill() {
    for (auto& row : m_shown) {
        m_rows->removeWidget(row.widget);
        delete row.widget;
    }
    m_shown.clear();
    if (QLayoutItem* stretch = m_rows->takeAt(0))
        delete stretch;
    for (const auto& profile : allProfiles(m_bridge.runtime().ledger())) {
        QPushButton* exportButton = nullptr;
        QWidget* row = makeRow(profile, exportButton);
        m_rows->addWidget(row);
        m_shown.push_back({row, toQString(profile.name), exportButton});
    }
    m_rows->addStretch(1);
    applyFilter();
    orderTabsAsLaidOut();
}

QWidget* ImportLayoutsSheet::makeRow(const ImportProfile& profile, QPushButton*& exportButton) {
    auto* card = new CardFrame(m_list);
    auto* layout = new QHBoxLayout(card);
    layout->setContentsMargins(14, 10, 14, 10);
    layout->setSpacing(12);

    auto* text = new QVBoxLayout;
    text->setSpacing(2);
    auto* title = new QHBoxLayout;
    title->setSpacing(8);
    title->addWidget(headingLabel(toQString(profile.name), card));
    QLabel* kind = secondaryLabel(
        profile.isBuiltIn ? QStringLiteral("Built in") : QStringLiteral("Saved by you"), card);
    kind->setWordWrap(false);
    title->addWidget(kind);
    title->addStretch(1);
    text->addLayout(title);
    text->addWidget(secondaryLabel(recognizedText(profile), card));
    QString details = toQString(label(profile.signConvention));
    if (profile.currency)
        details += QStringLiteral(" · Account currency: ") + toQString(*profile.currency);
    text->addWidget(secondaryLabel(details, card));
    layout->addLayout(text, 1);

    if (!profile.isBuiltIn) {
        exportButton = pushButton(QStringLiteral("Export Layout…"), card);
        exportButton->setAccessibleDescription(toQString(profile.name));
        connect(exportButton, &QPushButton::clicked, this,
                [this, profile] { exportLayout(profile); });
        layout->addWidget(exportButton, 0, Qt::AlignVCenter);
    }
    card->setAccessibleName(toQString(profile.name));
    return card;
}

void ImportLayoutsSheet::applyFilter() {
    const QString wanted = m_search->text().trimmed();
    for (const auto& row : m_shown)
        row.widget->setVisible(wanted.isEmpty() || row.name.contains(wanted, Qt::CaseInsensitive));
}

void ImportLayoutsSheet::exportLayout(const ImportProfile& profile) {
    const auto file = m_panels.saveLayoutFile(this, toQString(suggestedLayoutFileName(profile)));
    if (!file)
        return;
    LedgerRuntime& runtime = m_bridge.runtime();
    try {
        writeLayoutFile(*file, profile);
    } catch (const std::exception& error) {
        runtime.setErrorMessage(layoutSaveFailure(error));
        return;
    }
    runtime.setStatusMessage(savedLayoutMessage(*file));
}

void ImportLayoutsSheet::importLayout() {
    const auto file = m_panels.openLayoutFile(this);
    if (!file)
        return;
    ImportProfile profile;
    try {
        profile = readLayoutFile(*file);
    } catch (const std::exception& error) {
        showRefusal(importRefusal(error));
        return;
    }
    m_refusal->setVisible(false);
    LedgerRuntime& runtime = m_bridge.runtime();
    runtime.applyForScreen([profile](Ledger& ledger) { return upsertProfile(ledger, profile); },
                           [&runtime, profile](const ApplyResult& result) {
                               if (result.saved)
                                   runtime.setStatusMessage(importedLayoutMessage(profile));
                           });
}

void ImportLayoutsSheet::showRefusal(const std::string& message) {
    setLabelText(m_refusal, toQString(message));
    m_refusal->setVisible(true);
    m_bridge.runtime().setErrorMessage(message);
}

}  // namespace copperwick::app

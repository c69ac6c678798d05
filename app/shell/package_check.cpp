#include "app/shell/package_check.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPixmap>
#include <QSaveFile>
#include <QTimer>
#include <system_error>

#include "app/shell/sections.h"
#include "app/widgets/qt_text.h"
#include "copperwick_version.h"

namespace copperwick::app {

PackageCheck::PackageCheck(MainWindow& window, std::filesystem::path resultFile, QObject* parent)
    : QObject(parent), m_window(window), m_resultFile(std::move(resultFile)) {}

void PackageCheck::startAfterDelay() {
    QTimer::singleShot(kDelay, this, [this] { QCoreApplication::exit(run() ? 0 : 1); });
}

bool PackageCheck::run() {
    m_results.clear();
    m_screenshots.clear();
    // The result may be asked for in a folder of its own, as a smoke test
    // run in a clean system does; the pictures go beside it.
    std::error_code error;
    std::filesystem::create_directories(m_resultFile.parent_path(), error);
    checkWindow();
    visitSections();
    checkUndo();
    const bool written = write();
    const bool passed = std::all_of(m_results.begin(), m_results.end(),
                                    [](const CheckResult& result) { return result.ok; });
    return written && passed;
}

void PackageCheck::check(std::string name, bool ok, std::string detail) {
    m_results.push_back({std::move(name), ok, std::move(detail)});
}

void PackageCheck::checkWindow() {
    const QString title = m_window.windowTitle();
    check("window title", title == QStringLiteral("Copperwick"),
          "The window is titled \"" + toStdString(title) + "\".");

    const QListWidget* list = m_window.sidebar()->list();
    bool rowsMatch = list->count() == static_cast<int>(kSections.size());
    std::string labels;
    for (int row = 0; row < list->count(); ++row) {
        const QString text = list->item(row)->text();
        if (row < static_cast<int>(kSections.size()) &&
            text != toQString(kSections[static_cast<std::size_t>(row)].label))
            rowsMatch = false;
        labels += (row == 0 ? "" : ", ") + toStdString(text);
    }
    check("sidebar rows", rowsMatch,
          "The sidebar has " + std::to_string(list->count()) + " rows: " + labels + ".");

    const QLabel* demo = m_window.sidebar()->demoLabel();
    check("demo workspace", demo && demo->isVisible(),
          demo && demo->isVisible() ? "The sidebar says \"Demo workspace\"."
                                    : "The sidebar doesn't say it shows a demo.");

    const Ledger& ledger = m_window.bridge().runtime().ledger();
    const auto waiting = ledger.reviewCount() + ledger.aiFiledUnchecked().size();
    const QString badge = m_window.sidebar()->reviewBadge();
    check("review count", waiting > 0 ? badge == QString::number(waiting) : badge.isEmpty(),
          std::to_string(waiting) + " waiting for review; the Review row shows \"" +
              toStdString(badge) + "\".");
}

void PackageCheck::visitSections() {
    LedgerRuntime& runtime = m_window.bridge().runtime();
    const std::filesystem::path base = m_resultFile.parent_path() / m_resultFile.stem();
    for (const auto& info : kSections) {
        runtime.setSection(info.section);
        QCoreApplication::processEvents();
        SectionPage* page = m_window.page(info.section);
        const bool shown = m_window.pages()->currentWidget() == page && page->isVisible() &&
                           m_window.sidebar()->list()->currentRow() == sectionIndex(info.section);
        check("section " + std::string(info.slug), shown,
              shown ? "Choosing " + std::string(info.label) + " shows its screen."
                    : "Choosing " + std::string(info.label) + " didn't show its screen.");

        const std::filesystem::path picture = base.string() + "-" + std::string(info.slug) + ".png";
        if (m_window.grab().save(QString::fromStdString(picture.string()), "PNG"))
            m_screenshots.push_back(picture);
        else
            check("screenshot " + std::string(info.slug), false,
                  "Couldn't write " + picture.string() + ".");

        for (const SelfCheck& selfCheck : page->selfChecks()) {
            const SelfCheckOutcome outcome = selfCheck.run();
            check(std::string(info.slug) + ": " + selfCheck.name, outcome.ok, outcome.detail);
            QCoreApplication::processEvents();
        }
    }
}

void PackageCheck::checkUndo() {
    LedgerRuntime& runtime = m_window.bridge().runtime();
    QAction* undo = m_window.menus()->undoAction();
    const auto label = runtime.ledger().undoLabel();
    if (!label) {
        check("undo", !undo->isEnabled(), "Nothing to undo; the Undo command is off.");
        return;
    }
    const auto changes = runtime.ledger().changes.size();
    const QString title = undo->text();
    undo->trigger();
    QCoreApplication::processEvents();
    const bool ok = title == AppMenus::undoTitle(label) &&
                    runtime.ledger().changes.size() + 1 == changes &&
                    runtime.statusMessage() == std::optional<std::string>("Undone.");
    check("undo", ok,
          "\"" + toStdString(title) + "\" took back one change and said \"" +
              runtime.statusMessage().value_or("") + "\"; " +
              runtime.errorMessage().value_or("no error") + ".");
}

bool PackageCheck::write() const {
    QJsonArray checks;
    bool ok = true;
    for (const auto& result : m_results) {
        checks.append(QJsonObject{{"name", toQString(result.name)},
                                  {"ok", result.ok},
                                  {"detail", toQString(result.detail)}});
        ok = ok && result.ok;
    }
    QJsonArray screenshots;
    for (const auto& picture : m_screenshots)
        screenshots.append(QString::fromStdString(picture.string()));
    const QJsonObject root{{"ok", ok},
                           {"version", QStringLiteral(COPPERWICK_VERSION)},
                           {"checks", checks},
                           {"screenshots", screenshots}};
    QSaveFile file(QString::fromStdString(m_resultFile.string()));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QJsonDocument(root).toJson(QJsonDocument::Indented));
    return file.commit();
}

}  // namespace copperwick::app

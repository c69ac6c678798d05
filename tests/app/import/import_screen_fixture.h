#pragma once

// The whole window on a workspace of its own, showing the Import screen,
// whose file panels answer from the test.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

#include "app/import/import_page.h"
#include "tests/app/app_fixture.h"

namespace copperwick::testing {

namespace fs = std::filesystem;

class ImportScreenTest : public ::testing::Test, protected AppWorkspace {
  protected:
    explicit ImportScreenTest(bool demo = false) {
        openRuntime({.demo = demo});
        showWindow(AppSection::importFiles);
        page = qobject_cast<app::ImportPage*>(window->page(AppSection::importFiles));

        app::FilePanels panels;
        panels.openBankFiles = [this](QWidget*) {
            ++chooserOpened;
            return chosenFiles;
        };
        panels.saveLayoutFile = [this](QWidget*, const QString& suggested) {
            suggestedName = suggested;
            return saveTo;
        };
        panels.openLayoutFile = [this](QWidget*) { return openFrom; };
        page->setFilePanels(panels);
    }
    [[nodiscard]] static fs::path sample(const std::string& name) {
        return fs::path(COPPERWICK_SAMPLES) / name;
    }
    [[nodiscard]] fs::path write(const std::string& name, const std::string& contents) const {
        const fs::path file = temp / name;
        writeFile(file, contents);
        return file;
    }

    // Drops `files` on the drop area as a file manager would, then waits
    // until every one of them has been read, and Local AI has had its look
    // at any no layout fits.
    void drop(const std::vector<fs::path>& files) {
        QMimeData mime;
        QList<QUrl> urls;
        for (const auto& file : files)
            urls.append(QUrl::fromLocalFile(QString::fromStdString(file.string())));
        mime.setUrls(urls);
        QWidget* area = page->dropArea();
        const QPoint centre = area->rect().center();
        QDragEnterEvent enter(centre, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(area, &enter);
        QDropEvent dropped(QPointF(centre), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(area, &dropped);
        EXPECT_TRUE(waitUntil([&] { return importer.pendingAnalyses() == 0; }));
        settleLocalAI();
        QTest::qWait(1);
    }

    [[nodiscard]] app::ImportFileCard* card(const QString& fileName) const {
        for (auto* shown : page->cards()) {
            if (shown->fileName() == fileName)
                return shown;
        }
        return nullptr;
    }
    [[nodiscard]] const ImportFile& fileOf(const app::ImportFileCard* shown) const {
        return *importer.file(shown->fileID());
    }
    [[nodiscard]] QString readyText() const { return page->importBar()->readyLabel()->text(); }
    [[nodiscard]] QString blockedText() const {
        const QLabel* label = page->importBar()->blockedLabel();
        return label->isHidden() ? QString() : label->text();
    }
    // Chooses the picker's entry with `text` from the keyboard, as a person would.
    static void pick(QComboBox* picker, const QString& text) {
        const int wanted = picker->findText(text);
        ASSERT_GE(wanted, 0) << text.toStdString();
        picker->setFocus();
        while (picker->currentIndex() < wanted)
            QTest::keyClick(picker, Qt::Key_Down);
        while (picker->currentIndex() > wanted)
            QTest::keyClick(picker, Qt::Key_Up);
    }
    void pressImport() {
        QPushButton* button = page->importBar()->importButton();
        ASSERT_TRUE(button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
        waitForImport();
    }
    // The import saves in the background and comes back through the event loop.
    void waitForImport() {
        ASSERT_TRUE(waitUntil([this] { return !importer.isCommitting(); }));
    }

    app::ImportPage* page = nullptr;

    // What the file panels answer.
    std::vector<fs::path> chosenFiles;
    int chooserOpened = 0;
    std::optional<fs::path> saveTo;
    QString suggestedName;
    std::optional<fs::path> openFrom;
};

}  // namespace copperwick::testing

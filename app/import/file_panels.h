#pragma once

// The platform's file panels that the Import screen opens: choosing bank
// files, and saving or opening a layout file. Held as functions so that the
// screen's tests answer in the panels' place; standard() opens Qt's dialogs.
// A plain copyable value. Main thread only, like every dialog.

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include <QMimeData>
#include <QString>
#include <QWidget>

namespace copperwick::app {

struct FilePanels {
    // Bank files to import; none when the person cancelled.
    std::function<std::vector<std::filesystem::path>(QWidget* parent)> openBankFiles;
    // Where to write a layout file, offering `suggestedName`; absent when cancelled.
    std::function<std::optional<std::filesystem::path>(QWidget* parent,
                                                       const QString& suggestedName)>
        saveLayoutFile;
    // A saved layout file to read; absent when cancelled.
    std::function<std::optional<std::filesystem::path>(QWidget* parent)> openLayoutFile;

    [[nodiscard]] static FilePanels standard();
};

// A path as the file system spells it, for a name a Qt dialog gave.
[[nodiscard]] std::filesystem::path localPath(const QString& fileName);
// The local files among dragged or dropped URLs, as the file system spells
// them; anything else isn't a bank file.
[[nodiscard]] std::vector<std::filesystem::path> localFiles(const QMimeData* data);

}  // namespace copperwick::app

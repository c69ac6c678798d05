#include "app/import/file_panels.h"

#include <QFile>
#include <QFileDialog>
#include <QUrl>

namespace copperwick::app {

std::filesystem::path localPath(const QString& fileName) {
    // Through the file system's own encoding: a name that isn't UTF-8 still
    // names its file.
    return std::filesystem::path(QFile::encodeName(fileName).toStdString());
}

std::vector<std::filesystem::path> localFiles(const QMimeData* data) {
    std::vector<std::filesystem::path> files;
    if (!data || !data->hasUrls())
        return files;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile())
            files.push_back(localPath(url.toLocalFile()));
    }
    return files;
}

FilePanels FilePanels::standard() {
    FilePanels panels;
    panels.openBankFiles = [](QWidget* parent) {
        const QStringList chosen = QFileDialog::getOpenFileNames(
            parent, QStringLiteral("Choose Files"), QString(),
            QStringLiteral("Bank files (*.csv *.tsv *.txt *.ofx *.qfx);;All files (*)"));
        std::vector<std::filesystem::path> files;
        for (const QString& name : chosen)
            files.push_back(localPath(name));
        return files;
    };
    panels.saveLayoutFile =
        [](QWidget* parent, const QString& suggestedName) -> std::optional<std::filesystem::path> {
        const QString chosen =
            QFileDialog::getSaveFileName(parent, QStringLiteral("Export Layout"), suggestedName,
                                         QStringLiteral("Layout files (*.json);;All files (*)"));
        if (chosen.isEmpty())
            return std::nullopt;
        return localPath(chosen);
    };
    panels.openLayoutFile = [](QWidget* parent) -> std::optional<std::filesystem::path> {
        const QString chosen =
            QFileDialog::getOpenFileName(parent, QStringLiteral("Import Saved Layout"), QString(),
                                         QStringLiteral("Layout files (*.json);;All files (*)"));
        if (chosen.isEmpty())
            return std::nullopt;
        return localPath(chosen);
    };
    return panels;
}

}  // namespace copperwick::app

#include "app/shell/app_options.h"

#include <QCommandLineParser>

namespace copperwick::app {

RuntimeOptions AppOptions::runtimeOptions() const {
    RuntimeOptions options;
    options.demo = demo || checkPackage.has_value();
    if (!options.demo)
        options.dataFolder = dataDir;
    return options;
}

AppOptions parseAppOptions(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Copperwick: private household budgeting."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption dataDir(QStringLiteral("data-dir"),
                                     QStringLiteral("Keep the data in DIR instead of the standard "
                                                    "data folder."),
                                     QStringLiteral("DIR"));
    const QCommandLineOption demo(QStringLiteral("demo"),
                                  QStringLiteral("Open a fresh demo workspace of a fictional "
                                                 "household; your own data stays untouched."));
    const QCommandLineOption checkPackage(
        QStringLiteral("check-package"),
        QStringLiteral("Run the demo through every screen, write the result to FILE as JSON and "
                       "exit: 0 when every check passed, 1 otherwise."),
        QStringLiteral("FILE"));
    const QCommandLineOption finderIcon(
        QStringLiteral("show-finder-icon"),
        QStringLiteral("Give the desktop entry the icon of SKIN, or none for the standard icon, "
                       "and exit."),
        QStringLiteral("SKIN"));
    parser.addOptions({dataDir, demo, checkPackage, finderIcon});
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Bank files (CSV, OFX, QFX) to import."),
                                 QStringLiteral("[FILE...]"));
    parser.process(arguments);

    AppOptions options;
    if (parser.isSet(dataDir))
        options.dataDir = std::filesystem::path(parser.value(dataDir).toStdString());
    options.demo = parser.isSet(demo);
    if (parser.isSet(checkPackage))
        options.checkPackage = std::filesystem::path(parser.value(checkPackage).toStdString());
    for (const QString& file : parser.positionalArguments())
        options.files.push_back(std::filesystem::absolute(file.toStdString()));
    return options;
}

AppOptions parseAppOptions(const QCoreApplication& application) {
    return parseAppOptions(application.arguments());
}

void openFilesToImport(const AppOptions& options, LedgerRuntime& runtime, ImportModel& importer) {
    if (options.files.empty())
        return;
    runtime.setSection(AppSection::importFiles);
    importer.add(options.files, runtime);
}

}  // namespace copperwick::app

#pragma once

// Text between the logic (UTF-8 std::string) and Qt (QString).

#include <string>
#include <string_view>

#include <QString>

namespace copperwick::app {

[[nodiscard]] inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline std::string toStdString(const QString& text) {
    return text.toUtf8().toStdString();
}

}  // namespace copperwick::app

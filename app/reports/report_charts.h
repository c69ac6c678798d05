#pragma once

// The Reports screen's charts, on Qt Charts: where the spending went by
// category, and money month by month. Each is coloured from the palette and
// named for assistive technology by what it shows, figure by figure, since
// a chart says nothing to someone who can't see it. The rows beside each
// chart carry the same figures for the keyboard. Main thread only.

#include <functional>
#include <string>
#include <vector>

#include <QChartView>
#include <QWidget>

#include "core/reports/report.h"

namespace copperwick::app {

// A ring of the categories that spent money, largest first; `pressed` hears
// the index into `report.categories` of a slice that was clicked.
[[nodiscard]] QChartView* categoryDonut(const Report& report, std::function<void(int)> pressed,
                                        QWidget* parent);

// Bars of each month's spending (and its income beside it, with
// `withIncome`); `pressed` hears the month's index.
[[nodiscard]] QChartView* monthBars(const std::vector<MonthLine>& months,
                                    const std::string& currency, bool withIncome,
                                    const QString& name, std::function<void(int)> pressed,
                                    QWidget* parent);

}  // namespace copperwick::app

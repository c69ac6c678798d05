#include "app/reports/report_charts.h"

#include <algorithm>

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QPieSeries>
#include <QPieSlice>
#include <QValueAxis>

#include "app/reports/report_widgets.h"
#include "app/widgets/colour_mix.h"
#include "app/widgets/qt_text.h"
#include "core/model/date_text.h"
#include "core/model/money.h"

namespace copperwick::app {

namespace {

// A chart that sits on the card's surface in the palette's colours.
QChart* plainChart(const QPalette& palette) {
    auto* chart = new QChart;
    chart->setBackgroundVisible(false);
    chart->setPlotAreaBackgroundVisible(false);
    chart->setAnimationOptions(QChart::NoAnimation);
    chart->setMargins(QMargins(0, 0, 0, 0));
    chart->legend()->setLabelColor(palette.color(QPalette::Text));
    chart->legend()->setAlignment(Qt::AlignBottom);
    return chart;
}

QChartView* viewOf(QChart* chart, const QString& name, int height, QWidget* parent) {
    auto* view = new QChartView(chart, parent);
    view->setRenderHint(QPainter::Antialiasing);
    view->setFrameShape(QFrame::NoFrame);
    view->setBackgroundBrush(Qt::NoBrush);
    view->setStyleSheet(QStringLiteral("background: transparent"));
    view->setMinimumHeight(height);
    // The rows beside a chart carry its figures for the keyboard; neither the
    // view nor the surface it draws on (which a graphics view makes a stop
    // of its own) is a stop.
    view->setFocusPolicy(Qt::NoFocus);
    view->viewport()->setFocusPolicy(Qt::NoFocus);
    view->setAccessibleName(name);
    view->setToolTip(name);
    return view;
}

// Chart axes read money in whole units; the figures themselves are in the
// rows beside the chart, in cents.
double units(int64_t cents) {
    return static_cast<double>(cents) / 100.0;
}

}  // namespace

QChartView* categoryDonut(const Report& report, std::function<void(int)> pressed, QWidget* parent) {
    const QPalette& palette = parent->palette();
    QChart* chart = plainChart(palette);
    chart->legend()->hide();
    auto* series = new QPieSeries;
    series->setHoleSize(0.58);
    series->setPieSize(0.92);
    QString name = QStringLiteral("Chart of spending by category");
    for (std::size_t i = 0; i < report.categories.size(); ++i) {
        const CategoryLine& line = report.categories[i];
        if (line.amount <= 0)
            continue;
        auto* slice = series->append(toQString(line.name), units(line.amount));
        slice->setColor(categoryColour(palette, line.colorIndex));
        slice->setBorderColor(palette.color(QPalette::Base));
        slice->setBorderWidth(2);
        QObject::connect(slice, &QPieSlice::clicked, slice,
                         [pressed, index = static_cast<int>(i)] { pressed(index); });
        QObject::connect(slice, &QPieSlice::hovered, slice,
                         [slice](bool over) { slice->setExploded(over); });
        slice->setExplodeDistanceFactor(0.04);
        name += QStringLiteral(", ") + toQString(line.name) + QStringLiteral(" ") +
                toQString(Money::format(line.amount, report.filter.currency));
    }
    if (series->count() == 0)
        name = QStringLiteral("Chart of spending by category: no spending in this period");
    chart->addSeries(series);
    return viewOf(chart, name, 220, parent);
}

QChartView* monthBars(const std::vector<MonthLine>& months, const std::string& currency,
                      bool withIncome, const QString& name, std::function<void(int)> pressed,
                      QWidget* parent) {
    const QPalette& palette = parent->palette();
    QChart* chart = plainChart(palette);
    auto* series = new QBarSeries;
    auto* spending = new QBarSet(QStringLiteral("Spending"));
    spending->setColor(categoryColour(palette, 3));
    spending->setBorderColor(Qt::transparent);
    QBarSet* income = nullptr;
    if (withIncome) {
        income = new QBarSet(QStringLiteral("Income"));
        income->setColor(incomeColour(palette));
        income->setBorderColor(Qt::transparent);
    } else {
        chart->legend()->hide();
    }
    QStringList labels;
    QString spoken = name;
    double top = 1;
    for (const MonthLine& month : months) {
        const QString label = toQString(DateText::monthLabel(month.monthKey));
        labels.append(label.section(QLatin1Char(' '), 0, 0).left(3));
        spending->append(units(std::max<int64_t>(month.spending, 0)));
        top = std::max(top, units(month.spending));
        spoken += QStringLiteral(", ") + label + QStringLiteral(" ") +
                  toQString(Money::format(month.spending, currency)) + QStringLiteral(" spent");
        if (income) {
            income->append(units(std::max<int64_t>(month.income, 0)));
            top = std::max(top, units(month.income));
            spoken += QStringLiteral(", ") + toQString(Money::format(month.income, currency)) +
                      QStringLiteral(" income");
        }
    }
    if (income)
        series->append(income);
    series->append(spending);
    series->setBarWidth(withIncome ? 0.7 : 0.55);
    chart->addSeries(series);
    QObject::connect(series, &QBarSeries::clicked, series,
                     [pressed](int index, QBarSet*) { pressed(index); });

    const QColor text = palette.color(QPalette::Text);
    const QColor quiet = mix(palette.color(QPalette::Base), text, 0.55);
    const QColor rule = mix(palette.color(QPalette::Base), text, 0.12);
    auto* across = new QBarCategoryAxis;
    across->append(labels);
    across->setLabelsColor(quiet);
    across->setGridLineVisible(false);
    across->setLinePenColor(rule);
    chart->addAxis(across, Qt::AlignBottom);
    series->attachAxis(across);
    auto* up = new QValueAxis;
    up->setRange(0, top * 1.1);
    up->setTickCount(5);
    up->applyNiceNumbers();
    up->setLabelFormat(QStringLiteral("%.0f"));
    up->setLabelsColor(quiet);
    up->setGridLineColor(rule);
    up->setLineVisible(false);
    chart->addAxis(up, Qt::AlignLeft);
    series->attachAxis(up);
    return viewOf(chart, spoken, 210, parent);
}

}  // namespace copperwick::app

#include "app/reports/report_widgets.h"

#include <algorithm>

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#include "app/widgets/colour_mix.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

// A figure opens from the keyboard as from the pointer: Enter presses it
// as Space does, wherever it stands.
void openedByEnter(QPushButton* button) {
    button->setAutoDefault(true);
    button->setFocusPolicy(Qt::StrongFocus);
}

// A label that lets presses through to the row or tile under it.
QLabel* passiveLabel(QLabel* label) {
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    return label;
}

// The rounded surface of a pressable figure: the card's colour, tinted while
// the pointer is over it or it is down, ringed in the accent with the keyboard.
void paintPressable(QPushButton* button, bool framed) {
    QPainter painter(button);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colours = button->palette();
    const QColor base = colours.color(QPalette::Base);
    const QColor text = colours.color(QPalette::Text);
    const QRectF area = QRectF(button->rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(area, framed ? 10 : 6, framed ? 10 : 6);
    QColor fill = base;
    if (button->isDown())
        fill = mix(base, text, 0.10);
    else if (button->underMouse())
        fill = mix(base, text, 0.05);
    if (framed || fill != base)
        painter.fillPath(path, fill);
    if (button->hasFocus())
        painter.setPen(QPen(colours.color(QPalette::Highlight), 2));
    else if (framed)
        painter.setPen(QPen(mix(base, text, 0.13), 1));
    else
        return;
    painter.drawPath(path);
}

}  // namespace

SwatchDot::SwatchDot(QWidget* parent) : QWidget(parent) {
    setFixedSize(10, 10);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SwatchDot::setColour(const QColor& colour) {
    m_colour = colour;
    update();
}

void SwatchDot::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_colour);
    painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

FigureTile::FigureTile(const QString& title, const QString& figure, const QString& caption,
                       QWidget* parent)
    : QPushButton(parent),
      m_title(passiveLabel(secondaryLabel(title, this))),
      m_figure(passiveLabel(headingLabel(figure, this, 1.5))),
      m_caption(passiveLabel(noteLabel(caption, this, true))) {
    m_title->setWordWrap(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(14, 12, 14, 12);
    layout->setSpacing(3);
    layout->addWidget(m_title);
    layout->addWidget(m_figure);
    layout->addWidget(m_caption);
    layout->addStretch(1);
    const QString words = title + QStringLiteral(": ") + figure;
    setToolTip(words);
    setAccessibleName(words);
    setAccessibleDescription(caption);
    setCursor(Qt::PointingHandCursor);
    openedByEnter(this);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

QSize FigureTile::sizeHint() const {
    return {190, layout()->sizeHint().height()};
}

QSize FigureTile::minimumSizeHint() const {
    return {150, layout()->minimumSize().height()};
}

void FigureTile::paintEvent(QPaintEvent*) {
    paintPressable(this, true);
}

FigureRow::FigureRow(const std::vector<QString>& cells, const std::vector<int>& widths,
                     QWidget* parent)
    : QPushButton(parent), m_column(new QVBoxLayout(this)) {
    m_column->setContentsMargins(8, 6, 8, 6);
    m_column->setSpacing(4);
    auto* line = new QHBoxLayout;
    line->setSpacing(12);
    m_column->addLayout(line);
    QString words;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        QLabel* cell = nullptr;
        if (i == 0) {
            cell = new ElidedLabel(cells[i], this);
            line->addWidget(cell, 1);
        } else {
            cell = textLabel(cells[i], this);
            cell->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            const int width = i < widths.size() ? widths[i] : 100;
            cell->setMinimumWidth(width);
            line->addWidget(cell);
        }
        passiveLabel(cell);
        m_cells.push_back(cell);
        words += (words.isEmpty() ? QString() : QStringLiteral(", ")) + cells[i];
    }
    setToolTip(words);
    setAccessibleName(words);
    setCursor(Qt::PointingHandCursor);
    openedByEnter(this);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

std::vector<QString> FigureRow::cells() const {
    std::vector<QString> words;
    for (const QLabel* cell : m_cells) {
        const auto* elided = qobject_cast<const ElidedLabel*>(cell);
        words.push_back(elided ? elided->fullText() : cell->text());
    }
    return words;
}

void FigureRow::setSwatch(const QColor& colour) {
    if (!m_swatch) {
        m_swatch = new SwatchDot(this);
        auto* line = static_cast<QHBoxLayout*>(m_column->itemAt(0)->layout());
        line->insertWidget(0, m_swatch, 0, Qt::AlignVCenter);
    }
    m_swatch->setColour(colour);
}

void FigureRow::addBelow(QWidget* widget) {
    widget->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_column->addWidget(widget);
}

QSize FigureRow::sizeHint() const {
    return m_column->sizeHint();
}

QSize FigureRow::minimumSizeHint() const {
    return m_column->minimumSize();
}

void FigureRow::paintEvent(QPaintEvent*) {
    paintPressable(this, false);
}

QWidget* tableHeader(const std::vector<QString>& heads, const std::vector<int>& widths,
                     QWidget* parent) {
    auto* header = new QWidget(parent);
    auto* line = new QHBoxLayout(header);
    line->setContentsMargins(8, 0, 8, 0);
    line->setSpacing(12);
    for (std::size_t i = 0; i < heads.size(); ++i) {
        // The first head gives way on a narrow window as its cells do.
        QLabel* head = i == 0 ? new ElidedLabel(heads[i], header) : textLabel(heads[i], header);
        head->setForegroundRole(QPalette::PlaceholderText);
        head->setAccessibleName(heads[i]);
        QFont font = head->font();
        font.setWeight(QFont::DemiBold);
        head->setFont(font);
        if (i == 0) {
            line->addWidget(head, 1);
        } else {
            head->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            head->setMinimumWidth(i < widths.size() ? widths[i] : 100);
            line->addWidget(head);
        }
    }
    return header;
}

BudgetBar::BudgetBar(int64_t spent, int64_t budgeted, QWidget* parent)
    : QWidget(parent), m_spent(spent), m_budgeted(budgeted) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(8);
}

void BudgetBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QPalette& colours = palette();
    const QRectF track = QRectF(rect());
    const qreal radius = track.height() / 2;
    painter.setBrush(mix(colours.color(QPalette::Base), colours.color(QPalette::Text), 0.12));
    painter.drawRoundedRect(track, radius, radius);
    if (m_budgeted < 1 || m_spent <= 0)
        return;
    const double share =
        std::min(1.0, static_cast<double>(m_spent) / static_cast<double>(m_budgeted));
    QRectF filled = track;
    filled.setWidth(std::max(track.height(), track.width() * share));
    painter.setBrush(m_spent > m_budgeted ? warningColour(colours) : colours.color(QPalette::Link));
    painter.drawRoundedRect(filled, radius, radius);
}

}  // namespace copperwick::app

#pragma once

// The title of a section's screen and the line under it, as every screen
// opens. The title reads as the screen's name to assistive technology.

#include <QLabel>
#include <QString>
#include <QWidget>

namespace copperwick::app {

class PageHeader : public QWidget {
    Q_OBJECT

  public:
    // An empty `subtitle` leaves the line out.
    explicit PageHeader(const QString& title, const QString& subtitle = {},
                        QWidget* parent = nullptr);

    [[nodiscard]] QLabel* titleLabel() const { return m_title; }
    [[nodiscard]] QLabel* subtitleLabel() const { return m_subtitle; }

  private:
    QLabel* m_title;
    QLabel* m_subtitle;
};

}  // namespace copperwick::app

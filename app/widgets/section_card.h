#pragma once

// A card that holds one part of a screen: its title (behind a symbol when
// it has one) with the part's buttons at the right end of the title's row,
// an optional note under it, the part's own widgets, and then rows that are
// made again as a whole whenever what they show changes. The card is named
// by its title for assistive technology. Main thread only.

#include <string_view>

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QVBoxLayout>

#include "app/widgets/card_frame.h"

namespace copperwick::app {

class SectionCard : public CardFrame {
    Q_OBJECT

  public:
    // An empty `note` leaves the note out; an empty `symbol` the symbol.
    explicit SectionCard(const QString& title, const QString& note = {},
                         std::string_view symbol = {}, QWidget* parent = nullptr);

    [[nodiscard]] QLabel* titleLabel() const { return m_title; }
    // A button at the right end of the title's row, after those added before.
    QPushButton* addTitleButton(const QString& text);
    // The part's own widgets, under the note.
    [[nodiscard]] QVBoxLayout* body() const { return m_body; }
    // Adds a row after the body and the rows before it.
    void addRow(QWidget* row);
    // Takes every row out. A row goes once the event under way is over,
    // since its own button may be what asked.
    void clearRows();

  private:
    QLabel* m_title;
    QHBoxLayout* m_titleRow;
    QVBoxLayout* m_body;
    QVBoxLayout* m_rows;
};

}  // namespace copperwick::app

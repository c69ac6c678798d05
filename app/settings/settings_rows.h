#pragma once

// What the settings cards share: whether a save touched a kind of record,
// and the row a record stands in (its name, a quieter line under it, and its
// buttons at the right end). Main thread only.

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QWidget>

#include "core/model/ledger_delta.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

// Without a delta everything was read again, which touches every kind.
[[nodiscard]] bool touches(const SavedChange& change, RecordKind kind);

// Asks before something that can't be taken back: true when the person
// pressed `action` rather than Cancel, which is the default.
[[nodiscard]] bool confirmed(QWidget* parent, const QString& title, const QString& text,
                             const QString& action);

class RecordRow : public QWidget {
    Q_OBJECT

  public:
    // An empty `detail` leaves the quieter line out.
    RecordRow(const QString& name, const QString& detail, QWidget* parent = nullptr);

    [[nodiscard]] QLabel* nameLabel() const { return m_name; }
    // A button at the right end, after those added before, described to
    // assistive technology by the record's name.
    QPushButton* addButton(const QString& text);

  private:
    QLabel* m_name;
    QHBoxLayout* m_layout;
};

}  // namespace copperwick::app

#pragma once

// The message bars at the head of the screens: the runtime's error
// ("exclamationmark.triangle.fill") on top, its status
// ("checkmark.circle.fill") under it. Each bar stands only while its message
// does, and its "Dismiss" clears that message alone. The bars take their own
// room above the screen, which moves down while they stand, so that no
// message ever covers what a screen shows. How long a message lives is the
// window's business, not the bar's. Main thread only.

#include <optional>
#include <string>

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

namespace copperwick::app {

class SymbolView;

class MessageBar : public QFrame {
    Q_OBJECT

  public:
    MessageBar(bool isError, QWidget* parent = nullptr);

    void setText(const QString& text);
    [[nodiscard]] QString text() const { return m_text->text(); }
    [[nodiscard]] bool isError() const { return m_isError; }
    [[nodiscard]] QPushButton* dismissButton() const { return m_dismiss; }

  Q_SIGNALS:
    void dismissed();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    bool m_isError;
    SymbolView* m_icon;
    QLabel* m_text;
    QPushButton* m_dismiss;
};

// Both bars, in one column as wide as the screens' content, meant for the
// top of the column the screens stand in. Hidden while neither message
// stands, when it takes no room at all.
class MessageBarStack : public QWidget {
    Q_OBJECT

  public:
    explicit MessageBarStack(QWidget* parent = nullptr);

    void setErrorMessage(const std::optional<std::string>& message);
    void setStatusMessage(const std::optional<std::string>& message);

    [[nodiscard]] MessageBar* errorBar() const { return m_error; }
    [[nodiscard]] MessageBar* statusBar() const { return m_status; }

  Q_SIGNALS:
    void errorDismissed();
    void statusDismissed();

  private:
    void showWhileAnyStands();

    MessageBar* m_error;
    MessageBar* m_status;
};

}  // namespace copperwick::app

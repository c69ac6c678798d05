#pragma once

// The message bars laid over the top of the window: the runtime's error
// ("exclamationmark.triangle.fill") on top, its status
// ("checkmark.circle.fill") under it. Each bar stands only while its message
// does, and its "Dismiss" clears that message alone. How long a message
// lives is the window's business, not the bar's. Main thread only.

#include <optional>
#include <string>

#include <QFrame>
#include <QGraphicsDropShadowEffect>
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
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void shadeFromPalette();

    bool m_isError;
    QGraphicsDropShadowEffect* m_shadow;
    SymbolView* m_icon;
    QLabel* m_text;
    QPushButton* m_dismiss;
};

// Both bars, in one column over the top edge of its parent, which it follows
// as the parent is resized. Hidden while neither message stands.
class MessageBarStack : public QWidget {
    Q_OBJECT

  public:
    explicit MessageBarStack(QWidget* parent);

    void setErrorMessage(const std::optional<std::string>& message);
    void setStatusMessage(const std::optional<std::string>& message);

    [[nodiscard]] MessageBar* errorBar() const { return m_error; }
    [[nodiscard]] MessageBar* statusBar() const { return m_status; }

  Q_SIGNALS:
    void errorDismissed();
    void statusDismissed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void place();

    MessageBar* m_error;
    MessageBar* m_status;
};

}  // namespace copperwick::app

#include "app/widgets/enter_presses.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace copperwick::app {

namespace {

// Hands Enter on to the button as Space, press and release alike, so that
// a button with a menu opens it as Space would.
class EnterAsSpace : public QObject {
  public:
    using QObject::QObject;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto type = event->type();
        if (type != QEvent::KeyPress && type != QEvent::KeyRelease)
            return false;
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter) ||
            (key->modifiers() | Qt::KeypadModifier) != Qt::KeypadModifier)
            return false;
        QKeyEvent space(type, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "),
                        key->isAutoRepeat());
        QCoreApplication::sendEvent(watched, &space);
        return true;
    }
};

}  // namespace

void pressOnEnter(QAbstractButton* button) {
    button->installEventFilter(new EnterAsSpace(button));
}

}  // namespace copperwick::app

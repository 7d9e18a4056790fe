#include "focus_p.h"

#include <QtGui/QFocusEvent>
#include <QtWidgets/QTextEdit>

namespace {

class FocusPasser : public QObject
{
public:
    FocusPasser(QWidget* widget, QWidget* control) : QObject(control), m_control(control)
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::FocusIn)
            m_control->setFocus(static_cast<QFocusEvent*>(event)->reason());
        return false;
    }

private:
    QWidget* const m_control;
};

} // namespace

void passFocusOn(QWidget* widget, QWidget* control)
{
    new FocusPasser(widget, control);
}

void setTextReadOnly(QTextEdit* text, bool readOnly)
{
    text->setReadOnly(readOnly);
    if (readOnly)
        text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

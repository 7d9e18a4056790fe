#include "outputfield.h"

#include "plainline.h"

OutputField::OutputField(QWidget* parent) : QLineEdit(parent)
{
    setReadOnly(true);
    setFrame(false);
    setFocusPolicy(Qt::NoFocus);
    QPalette flat = palette();
    flat.setColor(QPalette::Base, Qt::transparent); // does not look like an input
    setPalette(flat);
}

void OutputField::showText(const QString& text, int limit)
{
    setText(plainLine(text, limit));
    setCursorPosition(0);
    setFocusPolicy(this->text().isEmpty() ? Qt::NoFocus : Qt::StrongFocus); // nothing to read
}

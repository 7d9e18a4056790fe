#include "logview.h"

#include "language.h"
#include "logbuffer.h"

#include <QtCore/QEvent>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QTextBlock>
#include <QtGui/QTextCursor>
#include <QtWidgets/QScrollBar>

namespace {

constexpr int DelayMs = 50;

QColor failureColor(const QPalette& palette)
{
    const bool dark = palette.color(QPalette::Base).lightness() < 128;
    return dark ? QColor(0xff, 0x8a, 0x80) : QColor(0xb3, 0x26, 0x1e);
}

} // namespace

LogView::LogView(LogBuffer& buffer, QWidget* parent) : QPlainTextEdit(parent), m_buffer(buffer)
{
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);
    setLineWrapMode(NoWrap);
    setMaximumBlockCount(MaxLines);
    Language::follow(this, [this] {
        setAccessibleName(tr("Log"));
        setPlaceholderText(tr("Discovery reports here what it finds and what fails."));
    });

    m_delay.setSingleShot(true);
    m_delay.setInterval(DelayMs);
    connect(&m_delay, &QTimer::timeout, this, &LogView::showWaiting);
    connect(&m_buffer, &LogBuffer::linesWaiting, &m_delay, qOverload<>(&QTimer::start));
    m_delay.start(); // for what came before this view
}

void LogView::copyLines()
{
    if (textCursor().hasSelection())
        copy();
    else
        QGuiApplication::clipboard()->setText(toPlainText());
}

void LogView::changeEvent(QEvent* event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() != QEvent::PaletteChange)
        return;
    QTextCharFormat failure;
    failure.setForeground(failureColor(palette()));
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); part != block.end(); ++part) {
            const QTextFragment text = part.fragment();
            if (!text.charFormat().hasProperty(QTextFormat::ForegroundBrush))
                continue;
            cursor.setPosition(text.position());
            cursor.setPosition(text.position() + text.length(), QTextCursor::KeepAnchor);
            cursor.setCharFormat(failure);
        }
    }
    cursor.endEditBlock();
}

void LogView::showWaiting()
{
    int dropped = 0;
    QList<LogLine> lines = m_buffer.take(&dropped);
    if (lines.isEmpty())
        return;
    if (dropped > 0)
        lines.prepend({lines.first().time, tr("Lines not shown: %1").arg(dropped), true});

    const bool atEnd = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    QTextCharFormat normal;
    QTextCharFormat failure;
    failure.setForeground(failureColor(palette()));
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    for (const LogLine& line : std::as_const(lines)) {
        if (!document()->isEmpty())
            cursor.insertBlock();
        const QString mark = line.failure ? QStringLiteral("\u26a0 ") : QString();
        cursor.insertText(line.time.toString(QStringLiteral("HH:mm:ss.zzz  ")), normal);
        cursor.insertText(mark + line.text, line.failure ? failure : normal);
    }
    cursor.endEditBlock();
    if (atEnd)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

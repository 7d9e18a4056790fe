#pragma once

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

class QHBoxLayout;
class QLabel;
class QToolButton;
class QVBoxLayout;

/// One page of a tool box: a header with a title and a toggle button, and the content below it.
class QvelToolBoxPage : public QWidget
{
    Q_OBJECT
public:
    /// Takes `content` over; the page is open.
    QvelToolBoxPage(QWidget* content, QWidget* parent);

    /// Null once someone else deleted it.
    QWidget* content() const { return m_content; }
    void setTitle(const QString& title);
    /// Gives the content back, without a parent.
    void releaseContent();
    /// Deletes the page; while its button is being toggled, only after that.
    void dispose();

Q_SIGNALS:
    void visibilityChanged(bool bVisible);

protected Q_SLOTS:
    void toggleVisibility(bool bVisible);

private:
    QPointer<QWidget> m_content;
    QLabel* m_headerLabel;
    QToolButton* m_toggleButton;
    QHBoxLayout* m_headerLayout;
    QVBoxLayout* m_pageLayout;
    bool m_toggling = false;
};

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
    QString title() const;
    /// Takes the title of a page that was given none, in the language of the moment.
    void inventTitle(int number);
    /// Its number, or 0.
    int inventedNumber() const { return m_inventedNumber; }
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
    int m_inventedNumber = 0;
    bool m_toggling = false;
};

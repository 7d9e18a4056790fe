#pragma once

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

#include <functional>

/// Makes a modal dialog that nobody answers for five seconds a failure instead of a hang.
class StuckDialog : public QTimer
{
public:
    StuckDialog()
    {
        callOnTimeout([] {
            if (QWidget* dialog = QApplication::activeModalWidget()) {
                dialog->close();
                QTest::qFail("a dialog is stuck", __FILE__, __LINE__);
            }
        });
        start(5000);
    }
};

/// A user who answers each modal dialog that opens: a message box by a click on `button`, another
/// dialog by the function, or by Escape if there is none.
class ModalUser : public QObject
{
public:
    explicit ModalUser(std::function<void(QDialog*)> answer = {}) : m_answer(std::move(answer))
    {
        connect(&m_timer, &QTimer::timeout, this, &ModalUser::look);
        m_timer.start(5);
    }

    /// Answers nothing more.
    void stop() { m_timer.stop(); }

    QMessageBox::StandardButton button = QMessageBox::Ok;
    /// "W|title|text|OK,Cancel" for a message box (N, I, W, C or ? for its icon), "Class|title" for
    /// another dialog.
    QStringList seen;

private:
    void look()
    {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || dialog == m_last)
            return;
        m_last = dialog;
        auto* box = qobject_cast<QMessageBox*>(dialog);
        if (!box) {
            seen.append(
                QString("%1|%2").arg(dialog->metaObject()->className(), dialog->windowTitle()));
            if (m_answer)
                m_answer(dialog);
            else
                QTest::keyClick(dialog, Qt::Key_Escape);
            return;
        }
        QStringList buttons;
        const auto all = box->buttons();
        for (const QAbstractButton* each : all)
            buttons.append(QString(each->text()).remove('&'));
        seen.append(QString("%1|%2|%3|%4")
                        .arg(QChar("NIWC?"[box->icon()]), box->windowTitle(), box->text(),
                             buttons.join(',')));
        QTest::mouseClick(box->button(button), Qt::LeftButton);
    }

    std::function<void(QDialog*)> m_answer;
    QTimer m_timer;
    QPointer<QDialog> m_last;
};

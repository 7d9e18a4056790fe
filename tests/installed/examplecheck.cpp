// Goes with each example where the tests build it: takes the steps of KESTREL_EXAMPLE_STEPS one
// after the other, and ends the program once all are done, or with 1 when one cannot be. A step is
// a text that some view, line or label shows; a button with that text is pressed, an item of a view
// selected.

#include <QtCore/QTimer>
#include <QtWidgets/QtWidgets>

namespace {

bool takeItem(QAbstractItemView& view, const QString& step)
{
    if (auto* tree = qobject_cast<QTreeView*>(&view))
        tree->expandToDepth(1);
    const QAbstractItemModel& model = *view.model();
    for (int column = 0; column < model.columnCount(); ++column) {
        const auto found = model.match(model.index(0, column), Qt::DisplayRole, step, 1,
                                       Qt::MatchExactly | Qt::MatchRecursive);
        if (found.isEmpty())
            continue;
        view.setCurrentIndex(found[0]);
        return true;
    }
    return false;
}

bool take(QWidget* widget, const QString& step)
{
    if (auto* view = qobject_cast<QAbstractItemView*>(widget))
        return view->model() && takeItem(*view, step);
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        if (button->text().remove('&') != step || !button->isEnabled())
            return false;
        button->click();
        return true;
    }
    auto* line = qobject_cast<QLineEdit*>(widget);
    auto* label = qobject_cast<QLabel*>(widget);
    return (line && line->text() == step) || (label && label->text() == step);
}

void checkExample()
{
    static QStringList steps = qEnvironmentVariable("KESTREL_EXAMPLE_STEPS").split('|');
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, qApp, [] {
        for (QWidget* widget : QApplication::allWidgets())
            if (widget->isVisible() && take(widget, steps[0])) {
                steps.removeFirst();
                return steps.isEmpty() ? QApplication::exit(0) : void();
            }
    });
    timer->start(100);
    QTimer::singleShot(60000, qApp, [] {
        qWarning("\"%s\" is not there", qPrintable(steps[0]));
        QApplication::exit(1);
    });
}
Q_COREAPP_STARTUP_FUNCTION(checkExample)

} // namespace

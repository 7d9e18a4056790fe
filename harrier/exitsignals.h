#pragma once

#include <QtCore/QObject>

class QSocketNotifier;

/// SIGINT and SIGTERM as a signal of Qt's, on the thread that made this object. One at a time. A
/// second signal of the system ends the program at once.
class ExitSignals : public QObject
{
    Q_OBJECT
public:
    explicit ExitSignals(QObject* parent = nullptr);
    ~ExitSignals() override;

Q_SIGNALS:
    void received();

private:
    QSocketNotifier* m_notifier = nullptr;
};

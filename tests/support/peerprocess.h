#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QStringList>

/// A server program of the tests: it prints "READY url" once it serves, and ends when its standard
/// input does.
class PeerProcess
{
public:
    PeerProcess() { m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel); }
    ~PeerProcess() { stop(); }

    /// The URL that the program serves, or none if it did not come up in time.
    QString start(const QString& program, const QStringList& arguments, int timeout = 60000)
    {
        m_process.start(program, arguments);
        QElapsedTimer elapsed;
        elapsed.start();
        const QByteArray ready = "READY ";
        while (elapsed.elapsed() < timeout) {
            while (m_process.canReadLine()) {
                const QByteArray line = m_process.readLine().trimmed();
                if (line.startsWith(ready))
                    return QString::fromUtf8(line.mid(ready.size()));
            }
            if (!m_process.waitForReadyRead(1000) && m_process.state() == QProcess::NotRunning)
                break;
        }
        return {};
    }

    /// Whether the program ended by itself, and well, when its standard input did.
    bool stop(int timeout = 15000)
    {
        if (m_process.state() == QProcess::NotRunning)
            return m_process.error() == QProcess::UnknownError && endedWell();
        m_process.closeWriteChannel();
        if (m_process.waitForFinished(timeout))
            return endedWell();
        m_process.kill();
        m_process.waitForFinished();
        return false;
    }

    QProcess& process() { return m_process; }

private:
    bool endedWell() const
    {
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }

    QProcess m_process;
};

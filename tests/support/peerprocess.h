#pragma once

#include <QtCore/QtCore>

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
        const QDeadlineTimer deadline(timeout);
        do {
            while (m_process.canReadLine())
                if (const QByteArray line = m_process.readLine(); line.startsWith("READY "))
                    return QString::fromUtf8(line.mid(6).trimmed());
        } while (!deadline.hasExpired() &&
                 (m_process.waitForReadyRead(1000) || m_process.state() != QProcess::NotRunning));
        return {};
    }

    /// Whether the program ended by itself, and well, when its standard input did.
    bool stop(int timeout = 15000)
    {
        m_process.closeWriteChannel();
        const bool ended = m_process.state() == QProcess::NotRunning
                               ? m_process.error() == QProcess::UnknownError
                               : m_process.waitForFinished(timeout);
        if (!ended) {
            m_process.kill();
            m_process.waitForFinished();
        }
        return ended && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }

    /// Ends the program without a word, as a power cut does.
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

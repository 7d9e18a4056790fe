#include "logbuffer.h"
#include "logview.h"
#include "plainline.h"
#include "support/warnings.h"

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QTextBlock>
#include <QtTest/QtTest>

#include <thread>
#include <vector>

class LogTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void plainLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("line");
        const auto row = [](const char* name, const QString& text, const QString& line) {
            QTest::newRow(name) << text << line;
        };
        row("markup stays", "<b>x</b>", "<b>x</b>");
        row("line breaks", "a\r\nb\tc\u2028d", "a  b c d");
        row("terminal control", "\x1b[2J", "\ufffd[2J");
        row("right-to-left override", "a\u202eb", "a\ufffdb");
        row("NUL", QString("a") + QChar(0) + 'b', "a\ufffdb");
        row("at the limit", "0123456789", "0123456789");
        row("cut", "0123456789A", "012345678\u2026");
        row("cut within a pair", "01234567\U0001F600A", "01234567\u2026");
    }
    void plainLine()
    {
        QFETCH(QString, text);
        QFETCH(QString, line);
        QCOMPARE(::plainLine(text, 10), line);
    }

    void failures_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("failure");
        QTest::newRow("service") << "Discovery FindServers on opc.tcp://x failed (BadTimeout)"
                                 << true;
        QTest::newRow("progress") << "Adding Url opc.tcp://x" << false;
        QTest::newRow("a server's own words")
            << "Adding Server failed with URL opc.tcp://x" << false;
        QTest::newRow("discarded") << "Discarding Url https://failed" << false;
    }
    void failures()
    {
        QFETCH(QString, text);
        LogBuffer buffer;
        buffer.append(text);
        int dropped = 0;
        QTEST(buffer.take(&dropped).value(0).failure, "failure");
    }

    void linesFromManyThreads()
    {
        constexpr int threads = 8;
        constexpr int each = 500;
        LogBuffer buffer;
        LogView view(buffer);
        std::vector<std::thread> writers;
        for (int t = 0; t < threads; ++t)
            writers.emplace_back([&buffer, t] {
                for (int i = 0; i < each; ++i)
                    buffer.append(QString("%1:%2").arg(t).arg(i));
            });
        QTRY_VERIFY(view.blockCount() > 1); // reads while they write
        for (auto& writer : writers)
            writer.join();
        QTRY_COMPARE(view.blockCount(), threads * each);
        QVector<int> next(threads, 0); // each thread's lines are whole and in order
        for (const QString& line : view.toPlainText().split('\n')) {
            const QStringList parts = line.section("  ", 1).split(':');
            QCOMPARE(parts.value(1).toInt(), next[parts.value(0).toInt()]++);
        }
    }

    void floodStaysBounded()
    {
        LogBuffer buffer;
        LogView view(buffer);
        for (int flood = 0; flood < 4; ++flood) {
            for (int i = 0; i < 100000; ++i)
                buffer.append(QString("line %1:%2").arg(flood).arg(i));
            QTRY_VERIFY(view.toPlainText().endsWith(QString("line %1:99999").arg(flood)));
            QVERIFY(view.blockCount() <= LogView::MaxLines);
        }
        // What got lost is said once a flood; the notes of the first ones are gone themselves.
        const QString note = QString("Lines not shown: %1").arg(100000 - LogBuffer::MaxLines);
        QCOMPARE(view.toPlainText().count(note), 1);
    }

    void marksFailuresWithoutColourAlone()
    {
        LogBuffer buffer;
        buffer.append("fine <b>x</b>");
        buffer.appendFailure("wrong");
        LogView view(buffer); // takes what came before it
        QTRY_COMPARE(view.blockCount(), 2);
        QVERIFY(view.document()->firstBlock().text().endsWith("  fine <b>x</b>"));
        QVERIFY(view.document()->lastBlock().text().endsWith(QStringLiteral("\u26a0 wrong")));
    }

    void copies()
    {
        LogBuffer buffer;
        LogView view(buffer);
        buffer.append("one");
        buffer.append("two");
        QTRY_COMPARE(view.blockCount(), 2);
        view.copyLines();
        QCOMPARE(QGuiApplication::clipboard()->text(), view.toPlainText());
        QTextCursor cursor = view.textCursor();
        cursor.movePosition(QTextCursor::End);
        cursor.select(QTextCursor::WordUnderCursor);
        view.setTextCursor(cursor);
        view.copyLines();
        QCOMPARE(QGuiApplication::clipboard()->text(), "two");
    }
};

QTEST_MAIN(LogTest)
#include "tst_log.moc"

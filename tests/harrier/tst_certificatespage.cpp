#include "certificatespage.h"
#include "host.h"
#include "support/warnings.h"

#include <QtTest/QtTest>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QtWidgets>

class CertificatesPageTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void firstStart_data()
    {
        QTest::addColumn<bool>("agreed");
        QTest::newRow("agreed") << true;
        QTest::newRow("declined") << false;
    }
    void firstStart()
    {
        QFETCH(bool, agreed);
        const QTemporaryDir dir;
        const QString folder = dir.path() + "/new";
        SettingsStore store;
        {
            Host host(store, 100, folder);
            CertificatesPage page(host);
            page.show();
            QTimer timer;
            int questions = 0;
            connect(&timer, &QTimer::timeout, this, [&] {
                QWidget* dialog = QApplication::activeModalWidget();
                if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
                    ++questions;
                    box->button(agreed ? QMessageBox::Yes : QMessageBox::No)->click();
                } else if (dialog) {
                    for (const char* input : {"txtOrganization", "txtLocality", "txtState"})
                        dialog->findChild<QLineEdit*>(input)->setText("x");
                    dialog->findChild<QLineEdit*>("txtCountry")->setText("GB");
                    QCOMPARE(dialog->findChild<QComboBox*>("cmbRSAKeyStrength")->currentText(),
                             QString("2048 bits"));
                    dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
                }
            });
            timer.start(10);
            Q_EMIT host.started();
            QCOMPARE(questions, 1);
            const QAbstractItemModel* list = page.findChild<QTreeView*>()->model();
            QCOMPARE(list->rowCount(), agreed ? 1 : 0);
            if (agreed)
                QCOMPARE(list->index(0, 0).data(), QString("Own Certificate"));
        }
        // Declined or not, the next start does not ask. A question would block.
        Host host(store, 100, folder);
        CertificatesPage page(host);
        Q_EMIT host.started();
        QCOMPARE(QFile::exists(folder + "/certificates/private/harrier.pem"), agreed);
        int dropped = 0;
        QVERIFY(host.log().take(&dropped).isEmpty());
    }

    void folderCannotBeCreated()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        SettingsStore store;
        Host host(store, 100, file.fileName() + "/sub");
        CertificatesPage page(host);
        QCOMPARE(page.findChild<QTreeView*>()->model()->rowCount(), 0);
        int dropped = 0;
        const QList<LogLine> lines = host.log().take(&dropped);
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.first().failure);
        QVERIFY(lines.first().text.contains(host.dataFolder() + "/certificates/trusted/"));
    }
};

QTEST_MAIN(CertificatesPageTest)
#include "tst_certificatespage.moc"

#include "certificates/certificateentry.h"
#include "certificates/certificatemodel.h"
#include "store.h"
#include "support/warnings.h"

#include <QtGui/QIcon>
#include <QtGui/QPainter>
#include <QtTest/QAbstractItemModelTester>

#include <functional>
#include <memory>

Q_DECLARE_METATYPE(std::function<void(Store&)>)

using Prepare = std::function<void(Store&)>;

class tst_CertificateModel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void entry();
    void columns();
    void otherRoles();
    void states_data();
    void states();
    void order();
    void operations_data();
    void operations();
    void foreignIndexes();
    void hostile_data();
    void hostile();
};

static QIcon ownIcon()
{
    QPixmap blue(64, 64);
    blue.fill(Qt::blue);
    return blue;
}

static std::unique_ptr<QvelCertificateModel> makeModel(const Store& store,
                                                       const QString& trusted = {})
{
    return std::make_unique<QvelCertificateModel>(trusted.isEmpty() ? store.trusted() : trusted,
                                                  "second", "third", store.rejected(),
                                                  "elsewhere/own.der", ownIcon(), true);
}

/// The rows as "kind name".
static QStringList rows(const QvelCertificateModel& model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows.append(QString::number(model.index(row, 0).data(Qt::UserRole).toInt()) + ' ' +
                    model.index(row, 12).data().toString());
    return rows;
}

static QModelIndex find(const QvelCertificateModel& model, const QString& name)
{
    return model.match(model.index(0, 12), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
}

static QImage imageOf(const QvelCertificateModel& model)
{
    return model.index(0, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(64, 64).toImage();
}

void tst_CertificateModel::init()
{
    failOnWarnings();
    setTime("2025-01-01");
}

void tst_CertificateModel::entry()
{
    QvelCertificateEntry root;
    QCOMPARE(root.kind, int(QvelCertificateEntry::Untrusted));
    QVERIFY(root.certificate.isNull() && !root.parent() && root.childrenCount() == 0);
    QCOMPARE(root.validState(), QvelCertificateEntry::Expired); // a null certificate
    auto* first = new QvelCertificateEntry;
    auto* second = new QvelCertificateEntry;
    second->kind = QvelCertificateEntry::Trusted;
    second->fileInfo.setFile("x.der");
    root.add(first);
    root.add(second);
    QCOMPARE(root.at(1), second);
    QCOMPARE(second->parent(), &root);
    QCOMPARE((QList<int>{root.row(), first->row(), second->row()}), (QList<int>{0, 0, 1}));

    const QvelCertificateEntry copy(*second);
    QCOMPARE(copy.kind, second->kind);
    QCOMPARE(copy.fileInfo.filePath(), QString("x.der"));
    QCOMPARE(copy.parent(), &root);
    QCOMPARE(copy.row(), -1); // the parent does not hold the copy
}

void tst_CertificateModel::columns()
{
    Store store;
    store.put(store.trusted() + "100% größe x.der", fixture("full.der"));
    store.put(store.trusted() + "own.der", fixture("issued.der"));
    store.put(store.rejected() + "strange.der", fixture("strange.der"));
    const auto model = makeModel(store);

    const auto local = [](const char* utc) {
        return QDateTime::fromString(utc, Qt::ISODate).toLocalTime();
    };
    const QVariant from = local("2024-03-01T00:00:00Z");
    const QVariant to = local("2030-03-01T00:00:00Z");
    const QList<QVariantList> expected = {
        {"Trusted", "Plant Client", from, to, "Kestrel Works", "Tools", "Town", "Shire", "GB",
         "urn:plant:kestrel:demo", "plant.example", "192.0.2.7", "100% größe x.der"},
        // The issuer's identity, whoever the subject is.
        {"Own Certificate", "Issued", from, to, "Kestrel Works", "Tools", "Town", "Shire", "GB", "",
         "", "", "own.der"},
        {"Untrusted", "", local("2020-01-01T00:00:00Z"), local("9999-12-31T23:59:59Z"), "Größe 水",
         "One, Two", "", "", "", "", "", "", "strange.der"}};
    const QStringList headers = {
        "Status",           "Name",     "Valid From", "Valid To", "Organization",
        "OrganizationUnit", "Locality", "State",      "Country",  "AppURI",
        "DomainName",       "IP",       "Filename"};
    QCOMPARE(model->rowCount(), expected.size());
    QCOMPARE(model->columnCount(), headers.size());
    for (int column = 0; column < headers.size(); ++column) {
        QCOMPARE(model->headerData(column, Qt::Horizontal), headers.at(column));
        QVERIFY(!model->headerData(column, Qt::Vertical).isValid());
        QVERIFY(!model->headerData(column, Qt::Horizontal, Qt::ToolTipRole).isValid());
        for (int row = 0; row < expected.size(); ++row)
            QCOMPARE(model->index(row, column).data(), expected.at(row).at(column));
    }
}

void tst_CertificateModel::otherRoles()
{
    Store store;
    store.put(store.trusted() + "a.der", fixture("full.der"));
    const auto model = makeModel(store, store.trusted() + "../trusted/");
    QVERIFY(model->hasChildren() && !model->hasChildren(model->index(0, 0)));
    QCOMPARE(model->flags({}), Qt::NoItemFlags);
    for (int column = 0; column < 13; ++column) {
        const QModelIndex index = model->index(0, column);
        QCOMPARE(model->flags(index), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        QCOMPARE(index.data(Qt::DecorationRole).isValid(), column == 0);
        QVERIFY(!index.data(Qt::EditRole).isValid() && !index.data(Qt::UserRole + 1).isValid());
        const QVariant user = index.data(Qt::UserRole);
        if (column == 0)
            QCOMPARE(user, 1);
        else if (column == 12)
            QCOMPARE(user, QFileInfo(store.trusted() + "../trusted/a.der").absoluteFilePath());
        else
            QVERIFY(!user.isValid());
    }
    for (const QModelIndex& none : {model->index(1, 0), model->index(-1, 0), model->index(0, 13),
                                    model->index(0, 0, model->index(0, 0))})
        QVERIFY(!none.isValid());
}

void tst_CertificateModel::states_data()
{
    QTest::addColumn<QString>("now");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<QString>("overlay");
    const QString error = ":/kestrel/images/overlay_error.png";
    const QString warning = ":/kestrel/images/overlay_warning.png";
    const QString early = "The certificate is not yet valid";
    const QString soon = "The certificate will expire soon";
    const QString late = "The certificate has expired";
    QTest::newRow("starts tomorrow") << "2024-02-29" << 1 << early << error;
    QTest::newRow("starts now") << "2024-03-01" << 0 << QString() << "";
    QTest::newRow("15 days left") << "2030-02-14" << 0 << QString() << "";
    QTest::newRow("less than 15 days") << "2030-02-14T00:00:01Z" << 2 << soon << warning;
    QTest::newRow("14 days left") << "2030-02-15" << 2 << soon << warning;
    QTest::newRow("last moment") << "2030-03-01" << 2 << soon << warning;
    QTest::newRow("over") << "2030-03-01T00:00:01Z" << 3 << late << error;
}

void tst_CertificateModel::states()
{
    QFETCH(QString, now);
    QFETCH(int, state);
    QFETCH(QString, toolTip);
    QFETCH(QString, overlay);
    Store store;
    store.put(store.ownCertificate(), fixture("full.der")); // of a plain blue icon
    const auto model = makeModel(store);
    const QImage plain = imageOf(*model);

    setTime(qPrintable(now));
    QvelCertificateEntry entry;
    entry.certificate = UaPkiCertificate::fromDER(UaByteString(fixture("full.der")));
    QCOMPARE(int(entry.validState()), state);
    QCOMPARE(model->index(0, 5).data(Qt::ToolTipRole).toString(), toolTip);

    QImage expected = plain.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (!overlay.isEmpty()) {
        QPainter painter(&expected);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRect(0, 0, 64, 64), QImage(overlay));
    }
    const QImage image = imageOf(*model);
    QCOMPARE(image.convertToFormat(expected.format()), expected);
    QCOMPARE(image == plain, overlay.isEmpty());
    // A host may have no icon for its own certificate. What is wrong with it is still shown.
    const QvelCertificateModel bare(store.trusted(), {}, {}, {}, "own.der", QIcon(), true);
    QCOMPARE(bare.index(0, 0).data(Qt::DecorationRole).value<QIcon>().isNull(), overlay.isEmpty());
    const auto key = [&] {
        return model->index(0, 0).data(Qt::DecorationRole).value<QIcon>().cacheKey();
    };
    const qint64 first = key();
    model->reload();
    QCOMPARE(key(), first); // composed once
}

void tst_CertificateModel::order()
{
    Store store;
    const QByteArray der = fixture("full.der");
    for (const char* name : {"b.cer", "A.der", "C.CRT", "own.der", "a.pem", "a.txt", ".h.der"})
        store.put(store.trusted() + name, der);
    for (const QString& path : {store.trusted(), store.rejected()})
        store.put(path + "pem.crt", toPem(der));
    store.put(store.rejected() + "a.der", der);
    store.put(store.rejected() + "own.der", der);
    const auto model = makeModel(store);
    const QAbstractItemModelTester tester(model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    const QStringList expected = {"1 A.der",   "1 b.cer", "1 C.CRT",  "2 own.der",
                                  "1 pem.crt", "0 a.der", "0 own.der"};
    QCOMPARE(rows(*model), expected);

    QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy inserted(model.get(), &QAbstractItemModel::rowsInserted);
    model->reload();
    QCOMPARE(rows(*model), expected);
    QCOMPARE(removed.size(), 1);
    QCOMPARE(inserted.size(), expected.size());

    store.dir.remove();
    model->reload();
    QCOMPARE(model->rowCount(), 0);
    model->reload();
    QCOMPARE(removed.size(), 2); // an empty list has no rows to remove
}

void tst_CertificateModel::operations_data()
{
    QTest::addColumn<Prepare>("before");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QStringList>("files");
    const QStringList start = {"rejected/r.der", "trusted/t.der"};
    const Prepare none = [](Store&) {};
    const Prepare sameNames = [](Store& store) {
        store.put(store.trusted() + "r.der", "not a certificate");
        store.put(store.rejected() + "t.der", "not a certificate");
    };
    const QStringList both = {"rejected/r.der", "rejected/t.der", "trusted/r.der", "trusted/t.der"};
    const Prepare readOnly = [](Store& store) {
        for (const QString& path : {store.trusted(), store.rejected()})
            store.setOpen(path, true);
    };
    QTest::newRow("trust") << none << "r.der"
                           << "sltTrust" << true << QStringList{"trusted/r.der", "trusted/t.der"};
    QTest::newRow("reject") << none << "t.der"
                            << "sltReject" << true
                            << QStringList{"rejected/r.der", "rejected/t.der"};
    QTest::newRow("delete trusted") << none << "t.der"
                                    << "sltDelete" << true << QStringList{"rejected/r.der"};
    QTest::newRow("delete rejected") << none << "r.der"
                                     << "sltDelete" << true << QStringList{"trusted/t.der"};
    QTest::newRow("trust the trusted") << none << "t.der"
                                       << "sltTrust" << false << start;
    QTest::newRow("trust, name taken") << sameNames << "r.der"
                                       << "sltTrust" << false << both;
    QTest::newRow("reject, name taken") << sameNames << "t.der"
                                        << "sltReject" << false << both;
    QTest::newRow("trust, read-only") << readOnly << "r.der"
                                      << "sltTrust" << false << start;
    QTest::newRow("reject, read-only") << readOnly << "t.der"
                                       << "sltReject" << false << start;
    QTest::newRow("delete, read-only") << readOnly << "t.der"
                                       << "sltDelete" << false << start;
}

void tst_CertificateModel::operations()
{
    QFETCH(Prepare, before);
    QFETCH(QString, file);
    QFETCH(QString, operation);
    QFETCH(bool, result);
    QFETCH(QStringList, files);
    Store store;
    store.put(store.trusted() + "t.der", fixture("full.der"));
    store.put(store.rejected() + "r.der", fixture("issued.der"));
    const auto model = makeModel(store);
    const QAbstractItemModelTester tester(model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    before(store);

    QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
    const bool restricted = strstr(QTest::currentDataTag(), "read-only");
    const auto run = [&] {
        bool done = !result;
        if (!QMetaObject::invokeMethod(model.get(), qPrintable(operation), Q_RETURN_ARG(bool, done),
                                       Q_ARG(QModelIndex, find(*model, file))))
            qFatal("no such slot");
        return done;
    };
    if (restricted) {
        const Unprivileged user;
        QCOMPARE(run(), result);
    } else {
        QCOMPARE(run(), result);
    }
    QCOMPARE(store.files(), files);
    QCOMPARE(removed.size(), 1); // read again, whatever the result
}

void tst_CertificateModel::foreignIndexes()
{
    Store store;
    store.put(store.rejected() + "r.der", fixture("full.der"));
    const auto model = makeModel(store, store.root() + "trusted"); // without a separator
    const QModelIndex stale = model->index(0, 0);
    model->reload();
    model->reload();
    QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
    QVERIFY(!model->sltTrust({}) && !model->sltReject({}) && !model->sltDelete({}));
    QCOMPARE(removed.size(), 0);
    if (stale.internalPointer() != model->index(0, 0).internalPointer())
        QVERIFY(!stale.data().isValid() && !model->sltDelete(stale));

    QFile::remove(store.rejected() + "r.der"); // behind the model's back
    QVERIFY(!model->sltTrust(model->index(0, 0)));
    QCOMPARE(model->rowCount(), 0);

    // The name is appended to the directory string as it is.
    store.put(store.rejected() + "r.der", fixture("full.der"));
    model->reload();
    QVERIFY(model->sltTrust(model->index(0, 0)));
    QCOMPARE(store.files(), QStringList("trustedr.der"));
    QCOMPARE(model->rowCount(), 0);
}

void tst_CertificateModel::hostile_data()
{
    QTest::addColumn<Prepare>("prepare");
    QTest::addColumn<QStringList>("listed"); // besides "1 good.der"
    const auto file = [](const QString& name, const QByteArray& content) {
        return Prepare([=](Store& store) {
            store.put(store.trusted() + name, content);
            store.put(store.rejected() + name, content);
        });
    };
    const QByteArray der = fixture("full.der");
    const QStringList none;
    QTest::newRow("empty") << file("x.der", {}) << none;
    QTest::newRow("noise") << file("x.der", QByteArray(5000, '\xff')) << none;
    QTest::newRow("truncated") << file("x.der", der.chopped(1)) << none;
    QTest::newRow("length of 4 GiB")
        << file("x.der", QByteArray("\x30\x84\xff\xff\xff\xff", 6) + der) << none;
    QTest::newRow("trailing bytes")
        << file("x.der", der + "rest") << QStringList{"1 x.der", "0 x.der"};
    QTest::newRow("key") << file("x.crt", fixture("key.pem")) << none;
    QTest::newRow("key and certificate")
        << file("x.crt", fixture("key.pem") + toPem(der)) << QStringList{"1 x.crt"};
    QTest::newRow("chain") << file("x.crt", fixture("chain.pem")) << QStringList{"1 x.crt"};
    QTest::newRow("broken PEM") << file("x.crt", toPem(der).chopped(60)) << none;
    QTest::newRow("strange names")
        << file("a b%41%1 größe 水\n.der", der)
        << QStringList{"1 a b%41%1 größe 水\n.der", "0 a b%41%1 größe 水\n.der"};
    QTest::newRow("1 GiB") << Prepare([=](Store& store) {
        for (const QString& path : {store.trusted(), store.rejected()}) {
            store.put(path + "x.der", der); // a certificate, and zeros
            store.put(path + "x.crt", toPem(der));
            if (!QFile::resize(path + "x.der", 1 << 30) || !QFile::resize(path + "x.crt", 1 << 30))
                qFatal("no sparse files here");
        }
    }) << none;
    QTest::newRow("directory") << Prepare([](Store& store) {
        QDir(store.trusted()).mkdir("x.der");
        QDir(store.rejected()).mkdir("x.der");
    }) << none;
    QTest::newRow("links") << Prepare([](Store& store) {
        QFile::link("nowhere", store.trusted() + "x.der");
        QFile::link(store.trusted() + "y.der", store.trusted() + "y.der"); // to itself
        QFile::link("/dev/zero", store.rejected() + "x.der");
        QFile::link(store.trusted() + "good.der", store.rejected() + "y.der");
    }) << QStringList{"0 y.der"};
    QTest::newRow("unreadable") << Prepare([=](Store& store) {
        for (const QString& path : {store.trusted(), store.rejected()}) {
            store.put(path + "x.der", der);
            QFile::setPermissions(path + "x.der", {});
        }
    }) << none;
}

/// The most memory that this process has used, in KiB.
static qint64 peakMemory()
{
    const QByteArray status = contentOf("/proc/self/status");
    const qsizetype at = status.indexOf("VmHWM:") + 6;
    return status.mid(at, status.indexOf("kB", at) - at).trimmed().toLongLong();
}

void tst_CertificateModel::hostile()
{
#ifndef Q_OS_LINUX
    QSKIP("reads /proc");
#endif
    QFETCH(Prepare, prepare);
    QFETCH(QStringList, listed);
    Store store;
    store.put(store.trusted() + "good.der", fixture("full.der"));
    prepare(store);
    const QStringList files = store.files();
    const qint64 peak = peakMemory();

    const Unprivileged user;
    const auto model = makeModel(store);
    QStringList expected = listed + QStringList("1 good.der");
    expected.sort();
    QStringList found = rows(*model);
    found.sort();
    QCOMPARE(found, expected);
    for (int row = 0; row < model->rowCount(); ++row)
        for (int column = 0; column < 13; ++column)
            QVERIFY(model->index(row, column).data().isValid());
    QCOMPARE(store.files(), files);
    QVERIFY2(peakMemory() - peak < 64 * 1024, qPrintable(QString::number(peakMemory() - peak)));
}

QTEST_MAIN(tst_CertificateModel)
#include "tst_certificatemodel.moc"

#include "create.h"
#include "figure.h"

#include <Kestrel/QvelCertificateManager>
#include <Kestrel/QvelCertificateModel>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtGui/QIcon>
#include <QtGui/QStandardItemModel>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QTreeView>

#include <openssl/x509v3.h>

#include <memory>

namespace {

constexpr int certificates = 1000;
constexpr int runs = 9;
constexpr int secondsPerDay = 24 * 60 * 60;

/// A store whose trusted directory holds 1,000 different certificates, each `copies` times, a part
/// of them about to expire.
class Store
{
public:
    explicit Store(int copies)
    {
        QDir(m_dir.path()).mkdir("rejected");
        QDir(m_dir.path()).mkdir("trusted");
        static const UaPkiRsaKeyPair key(2048);
        for (int i = 0; i < certificates; ++i) {
            const UaPkiIdentity name = {UaString("Client " + QByteArray::number(i)),
                                        UaString("Organization"),
                                        UaString("Unit"),
                                        UaString("Town"),
                                        UaString("Shire"),
                                        UaString("GB")};
            const UaPkiCertificateInfo info = {UaString("urn:host:bench:" + QByteArray::number(i)),
                                               UaString("192.0.2.7"), UaString("host.example"),
                                               (i % 2 ? 7 : 365) * secondsPerDay};
            const UaPkiCertificate certificate(info, name, key.publicKey(), name, key.privateKey());
            for (int copy = 0; copy < copies; ++copy) {
                const QString file = trusted() + QString("client%1-%2.der").arg(i).arg(copy);
                if (!certificate.toDERFile(QFile::encodeName(file)))
                    qFatal("%s cannot be written", qPrintable(file));
            }
        }
    }
    QString trusted() const { return m_dir.path() + "/trusted/"; }
    QString rejected() const { return m_dir.path() + "/rejected/"; }

private:
    QTemporaryDir m_dir;
};

// --- The plain loop ------------------------------------------------------------------------------

struct Fields
{
    std::string commonName, organization, unit, locality, state, country, uri, dns, ip;
    std::time_t from, to;
};

std::string part(const X509_NAME* name, int nid)
{
    const int at = X509_NAME_get_index_by_NID(name, nid, -1);
    if (at < 0)
        return {};
    unsigned char* utf8 = nullptr;
    const int size =
        ASN1_STRING_to_UTF8(&utf8, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, at)));
    std::string text(reinterpret_cast<char*>(utf8), size_t(std::max(size, 0)));
    OPENSSL_free(utf8);
    return text;
}

std::time_t timeOf(const ASN1_TIME* time)
{
    std::tm fields = {};
    ASN1_TIME_to_tm(time, &fields);
    return timegm(&fields);
}

Fields readPlainly(const std::string& path)
{
    BIO* file = BIO_new_file(path.c_str(), "rb");
    X509* x509 = d2i_X509_bio(file, nullptr);
    BIO_free(file);
    if (!x509)
        qFatal("%s cannot be read", path.c_str());
    const X509_NAME* issuer = X509_get_issuer_name(x509);
    Fields fields = {part(X509_get_subject_name(x509), NID_commonName),
                     part(issuer, NID_organizationName),
                     part(issuer, NID_organizationalUnitName),
                     part(issuer, NID_localityName),
                     part(issuer, NID_stateOrProvinceName),
                     part(issuer, NID_countryName),
                     {},
                     {},
                     {},
                     timeOf(X509_get0_notBefore(x509)),
                     timeOf(X509_get0_notAfter(x509))};
    auto* names =
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(x509, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; i < sk_GENERAL_NAME_num(names); ++i) {
        int type = 0;
        const auto* value = static_cast<const ASN1_STRING*>(
            GENERAL_NAME_get0_value(sk_GENERAL_NAME_value(names, i), &type));
        std::string& field = type == GEN_URI   ? fields.uri
                             : type == GEN_DNS ? fields.dns
                                               : fields.ip;
        field.assign(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)),
                     size_t(ASN1_STRING_length(value)));
    }
    GENERAL_NAMES_free(names);
    X509_free(x509);
    return fields;
}

double loadPlainly(const Store& store)
{
    return cpuMilliseconds([&] {
        std::vector<Fields> all;
        const QStringList files = QDir(store.trusted()).entryList(QDir::Files);
        for (const QString& file : files)
            all.push_back(readPlainly((store.trusted() + file).toStdString()));
        if (all.size() < certificates || all.back().ip.size() != 4)
            qFatal("the loop has lost something");
    });
}

// --- The list ------------------------------------------------------------------------------------

double loadModel(const Store& store)
{
    return cpuMilliseconds([&] {
        const QvelCertificateModel model(store.trusted(), {}, {}, store.rejected(), {}, {}, true);
        if (model.rowCount() < certificates)
            qFatal("the model has lost something");
    });
}

std::unique_ptr<QvelCertificateManager> showManager(const Store& store)
{
    auto manager = std::make_unique<QvelCertificateManager>(
        "Bench", "kestrel", store.trusted(), "", "", store.rejected(), "", "", QIcon(), false);
    manager->resize(1600, 900);
    manager->show();
    QApplication::processEvents();
    return manager;
}

/// Reads the store again in a manager that shows it, until it is on the screen.
double reload(QvelCertificateManager& manager)
{
    return cpuMilliseconds([&] {
        manager.sltReload();
        manager.grab();
    });
}

double paint(QTreeView& view)
{
    constexpr int times = 20;
    return cpuMilliseconds([&] {
        for (int i = 0; i < times; ++i)
            view.viewport()->grab();
    });
}

/// What `model` shows, as built items: its texts and its icons.
void copyItems(const QAbstractItemModel& model, QStandardItemModel& copy)
{
    const QLocale locale;
    for (int row = 0; row < model.rowCount(); ++row) {
        QList<QStandardItem*> items;
        for (int column = 0; column < model.columnCount(); ++column) {
            const QModelIndex index = model.index(row, column);
            const QVariant value = index.data();
            // As the delegate writes it.
            const QString text = value.userType() == QMetaType::QDateTime
                                     ? locale.toString(value.toDateTime(), QLocale::ShortFormat)
                                     : value.toString();
            items.append(new QStandardItem(index.data(Qt::DecorationRole).value<QIcon>(), text));
        }
        copy.appendRow(items);
    }
}

double paintRatio(const Store& store)
{
    const std::unique_ptr<QvelCertificateManager> manager = showManager(store);
    auto& view = *manager->findChild<QTreeView*>();
    QStandardItemModel items;
    copyItems(*view.model(), items);
    QTreeView other;
    other.setModel(&items);
    other.setRootIsDecorated(false);
    other.setAlternatingRowColors(true);
    other.setAllColumnsShowFocus(true);
    other.resize(view.size());
    for (int column = 0; column < items.columnCount(); ++column)
        other.setColumnWidth(column, view.columnWidth(column));
    other.show();
    QApplication::processEvents();
    if (view.viewport()->size() != other.viewport()->size())
        qFatal("the lists differ in size");
    const auto [ours, theirs] = medians(
        runs, [&] { return paint(view); }, [&] { return paint(other); });
    return ours / theirs;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    Figures figures("certificates");
    const Store store(1);
    const auto [model, plain] = medians(
        runs, [&] { return loadModel(store); }, [&] { return loadPlainly(store); });
    figures.report("load 1000 to plain loop", model / plain, 1.5);
    figures.report("paint to standard items", paintRatio(store), 2);

    const Store large(10);
    const auto [many, few] = medians(
        3, [&] { return loadModel(large); }, [&] { return loadModel(store); });
    figures.report("load 10000 to 1000", many / few, 12);
    const std::unique_ptr<QvelCertificateManager> manyShown = showManager(large);
    const std::unique_ptr<QvelCertificateManager> fewShown = showManager(store);
    const auto [manyAgain, fewAgain] = medians(
        3, [&] { return reload(*manyShown); }, [&] { return reload(*fewShown); });
    figures.report("reload 10000 shown to 1000", manyAgain / fewAgain, 12);

    figures.report("create to bare EVP", createRatio(), 1.2);
    return figures.result();
}

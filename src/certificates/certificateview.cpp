#include "certificateview.h"

#include "base/outputrow_p.h"
#include "base/retranslate_p.h"
#include "platform/pki/uapkicertificate.h"
#include "platform/pki/uapkikeys.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDateTime>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLineEdit>

#include <array>

namespace {

QString subject(const UaPkiCertificate& certificate)
{
    return certificate.subjectText().toQString();
}

QString issuer(const UaPkiCertificate& certificate)
{
    const QString name = certificate.issuerText().toQString();
    return name == subject(certificate) ? QvelCertificateView::tr("%1 (itself)").arg(name) : name;
}

QString validity(const UaPkiCertificate& certificate)
{
    const auto text = [](const UaDateTime& time) {
        return time.toQDateTime().toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    };
    const QString span = QvelCertificateView::tr("%1 to %2 UTC")
                             .arg(text(certificate.validFrom()), text(certificate.validTo()));
    if (certificate.isValid())
        return span;
    return UaDateTime::now() < certificate.validFrom()
               ? QvelCertificateView::tr("Not yet valid: %1").arg(span)
               : QvelCertificateView::tr("Expired: %1").arg(span);
}

QString applicationUri(const UaPkiCertificate& certificate)
{
    return certificate.info().applicationUri.toQString();
}

QString hosts(const UaPkiCertificate& certificate)
{
    QStringList hosts = {certificate.info().dnsName.toQString(),
                         certificate.info().ipAddress.toQString()};
    hosts.removeAll(QString());
    return hosts.join(QLatin1String(", "));
}

QString key(const UaPkiCertificate& certificate)
{
    const int bits = certificate.publicKey().keySize();
    return bits > 0 ? QvelCertificateView::tr("%1 bits").arg(bits)
                    : QvelCertificateView::tr("Of an unknown kind");
}

QString signature(const UaPkiCertificate& certificate)
{
    return certificate.signatureAlgorithm().toQString();
}

template <QCryptographicHash::Algorithm algorithm>
QString thumbprint(const UaPkiCertificate& certificate)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(certificate.toDER().bytes(), algorithm).toHex(' ').toUpper());
}

QString serialNumber(const UaPkiCertificate& certificate)
{
    return QString::fromLatin1(certificate.serialNumber().bytes().toHex(' ').toUpper());
}

struct Line
{
    const char* objectName;
    const char* label;
    QString (*text)(const UaPkiCertificate&);
};

constexpr Line lines[] = {
    {"subject", QT_TRANSLATE_NOOP("QvelCertificateView", "Subject"), subject},
    {"issuer", QT_TRANSLATE_NOOP("QvelCertificateView", "Issuer"), issuer},
    {"validity", QT_TRANSLATE_NOOP("QvelCertificateView", "Validity"), validity},
    {"applicationUri", QT_TRANSLATE_NOOP("QvelCertificateView", "Application URI"), applicationUri},
    {"hosts", QT_TRANSLATE_NOOP("QvelCertificateView", "Host names"), hosts},
    {"key", QT_TRANSLATE_NOOP("QvelCertificateView", "Key"), key},
    {"signature", QT_TRANSLATE_NOOP("QvelCertificateView", "Signature"), signature},
    {"serialNumber", QT_TRANSLATE_NOOP("QvelCertificateView", "Serial number"), serialNumber},
    {"sha1", QT_TRANSLATE_NOOP("QvelCertificateView", "Thumbprint (SHA-1)"),
     thumbprint<QCryptographicHash::Sha1>},
    {"sha256", QT_TRANSLATE_NOOP("QvelCertificateView", "Thumbprint (SHA-256)"),
     thumbprint<QCryptographicHash::Sha256>},
};

} // namespace

class QvelCertificateView::Private
{
public:
    UaPkiCertificate certificate;
    std::array<QLineEdit*, std::size(lines)> outputs;
};

QvelCertificateView::QvelCertificateView(QWidget* parent) : QWidget(parent), d(new Private)
{
    auto* form = new QFormLayout(this);
    form->setContentsMargins({});
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    for (std::size_t i = 0; i < std::size(lines); ++i)
        d->outputs[i] = addOutputRow(form, QString(), lines[i].objectName);
    retranslated(this, [this, form] {
        for (std::size_t i = 0; i < std::size(lines); ++i)
            nameOutputRow(form, d->outputs[i], tr(lines[i].label));
        setCertificate(d->certificate);
    });
    // The longest that has a usual length.
    const QString digits(47, QLatin1Char('0'));
    d->outputs[0]->setMinimumWidth(fontMetrics().horizontalAdvance(digits));
}

QvelCertificateView::~QvelCertificateView() = default;

void QvelCertificateView::setCertificate(const UaPkiCertificate& certificate)
{
    d->certificate = certificate;
    for (std::size_t i = 0; i < std::size(lines); ++i)
        showOutput(d->outputs[i], certificate.isNull() ? QString() : lines[i].text(certificate));
}

UaPkiCertificate QvelCertificateView::certificate() const
{
    return d->certificate;
}

QString QvelCertificateView::text() const
{
    QString text;
    for (const Line& line : lines)
        if (!d->certificate.isNull())
            text += QStringLiteral("%1: %2\n").arg(tr(line.label), line.text(d->certificate));
    return text;
}

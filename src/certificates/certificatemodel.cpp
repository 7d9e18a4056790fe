#include "certificatemodel.h"

#include "base/editorhelpers_p.h"
#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "certificatemodel_p.h"
#include "images/images_p.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtGui/QPainter>

#include <algorithm>
#include <utility>

namespace {

QString shown(const UaString& text)
{
    return shownText(text.toQString());
}

QDateTime localTime(const UaDateTime& time)
{
    return time.toQDateTime().toLocalTime();
}

QString kindText(int kind)
{
    static const char* const kinds[] = {
        QT_TRANSLATE_NOOP("QvelCertificateModel", "Untrusted"),
        QT_TRANSLATE_NOOP("QvelCertificateModel", "Trusted"),
        QT_TRANSLATE_NOOP("QvelCertificateModel", "Own Certificate")};
    return QvelCertificateModel::tr(kinds[kind]);
}

QIcon withOverlay(const QIcon& base, const QString& overlay)
{
    constexpr QSize size(64, 64);
    QImage image = base.pixmap(size, QIcon::Normal, QIcon::Off)
                       .toImage()
                       .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) { // a host without an icon for its own certificate
        image = QImage(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
    }
    const qreal ratio = image.devicePixelRatio();
    image.setDevicePixelRatio(1);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRect(QPoint(0, 0), QPoint(image.width() - 1, image.height() - 1)),
                          paletteIcon(overlay).pixmap(size).toImage());
    }
    image.setDevicePixelRatio(ratio);
    return QPixmap::fromImage(image);
}

} // namespace

const QvelCertificateEntry* QvelCertificateModel::Private::entryOf(const QModelIndex& index) const
{
    const bool present = root && index.row() >= 0 && index.column() >= 0 &&
                         index.row() < root->childrenCount() &&
                         root->at(index.row()) == index.internalPointer();
    return present ? root->at(index.row()) : nullptr;
}

const QIcon& QvelCertificateModel::Private::icon(const QvelCertificateEntry& entry)
{
    const QvelCertificateEntry::ValidState state = entry.validState(now());
    if (const bool isDark = isDarkPalette(); isDark != std::exchange(wasDark, isDark))
        for (QIcon(&each)[states] : icons)
            std::fill(each + QvelCertificateEntry::Valid + 1, std::end(each), QIcon());
    QIcon& icon = icons[entry.kind][state];
    if (icon.isNull() && state != QvelCertificateEntry::Valid)
        icon = withOverlay(icons[entry.kind][QvelCertificateEntry::Valid],
                           state == QvelCertificateEntry::ExpiresSoon
                               ? QStringLiteral(":/kestrel/images/overlay_warning.png")
                               : QStringLiteral(":/kestrel/images/overlay_error.png"));
    return icon;
}

QvelCertificateModel::QvelCertificateModel(const QString& trustedPath, const QString& secondPath,
                                           const QString& thirdPath, const QString& rejectedPath,
                                           const QString& ownCertificateFile,
                                           const QIcon& ownCertificateIcon, bool, QObject* parent)
    : QAbstractItemModel(parent),
      d(new Private{trustedPath, secondPath, thirdPath, rejectedPath, ownCertificateFile})
{
    const auto setIcon = [this](QvelCertificateEntry::CertificateKind kind, const QIcon& icon) {
        d->icons[kind][QvelCertificateEntry::Valid] = icon;
    };
    setIcon(QvelCertificateEntry::Untrusted, paletteIcon(":/kestrel/images/clearlog.png"));
    setIcon(QvelCertificateEntry::Trusted, paletteIcon(":/kestrel/images/on.png"));
    setIcon(QvelCertificateEntry::OwnCertificate, ownCertificateIcon);
    initialize();
    whenLanguageChanges(this, [this] {
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, CertificateColumn::Count - 1);
        if (const int rows = rowCount())
            Q_EMIT dataChanged(index(0, CertificateColumn::Status),
                               index(rows - 1, CertificateColumn::Status));
    });
}

QvelCertificateModel::~QvelCertificateModel()
{
    cleanup();
}

QModelIndex QvelCertificateModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column < 0 || column >= CertificateColumn::Count || row < 0 || row >= rowCount(parent))
        return {};
    return createIndex(row, column, d->root->at(row));
}

QModelIndex QvelCertificateModel::parent(const QModelIndex&) const
{
    return {}; // every certificate is a child of the root
}

int QvelCertificateModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !d->root ? 0 : d->root->childrenCount();
}

int QvelCertificateModel::columnCount(const QModelIndex&) const
{
    return CertificateColumn::Count;
}

bool QvelCertificateModel::hasChildren(const QModelIndex& parent) const
{
    return !parent.isValid();
}

QVariant QvelCertificateModel::data(const QModelIndex& index, int role) const
{
    const QvelCertificateEntry* entry = d->entryOf(index);
    if (!entry)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == CertificateColumn::Status)
            return kindText(entry->kind);
        return d->texts[size_t(index.row())][size_t(index.column())];
    case Qt::DecorationRole:
        return index.column() == CertificateColumn::Status ? QVariant(d->icon(*entry)) : QVariant();
    case Qt::ToolTipRole:
        switch (entry->validState(d->now())) {
        case QvelCertificateEntry::Valid:
            return {};
        case QvelCertificateEntry::NotYetValid:
            return tr("The certificate is not yet valid");
        case QvelCertificateEntry::ExpiresSoon:
            return tr("The certificate will expire soon");
        case QvelCertificateEntry::Expired:
            return tr("The certificate has expired");
        }
        return {};
    case Qt::UserRole:
        if (index.column() == CertificateColumn::Status)
            return entry->kind;
        if (index.column() == CertificateColumn::FileName)
            return entry->fileInfo.absoluteFilePath();
        return {};
    default:
        return {};
    }
}

QVariant QvelCertificateModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char* const headers[] = {
        QT_TR_NOOP("Status"),   QT_TR_NOOP("Name"),         QT_TR_NOOP("Valid From"),
        QT_TR_NOOP("Valid To"), QT_TR_NOOP("Organization"), QT_TR_NOOP("OrganizationUnit"),
        QT_TR_NOOP("Locality"), QT_TR_NOOP("State"),        QT_TR_NOOP("Country"),
        QT_TR_NOOP("AppURI"),   QT_TR_NOOP("DomainName"),   QT_TR_NOOP("IP"),
        QT_TR_NOOP("Filename")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= CertificateColumn::Count)
        return {};
    static_assert(std::size(headers) == CertificateColumn::Count);
    return tr(headers[section]);
}

Qt::ItemFlags QvelCertificateModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

void QvelCertificateModel::reload()
{
    initialize();
}

bool QvelCertificateModel::sltTrust(QModelIndex index)
{
    return move(index, d->trustedPath);
}

bool QvelCertificateModel::sltReject(QModelIndex index)
{
    return move(index, d->rejectedPath);
}

bool QvelCertificateModel::sltDelete(QModelIndex index)
{
    const QvelCertificateEntry* entry = d->entryOf(index);
    if (!entry)
        return false;
    const bool removed = QFile::remove(entry->fileInfo.absoluteFilePath());
    initialize();
    return removed;
}

bool QvelCertificateModel::move(const QModelIndex& index, const QString& directory)
{
    const QvelCertificateEntry* entry = d->entryOf(index);
    if (!entry)
        return false;
    const QString source = entry->fileInfo.absoluteFilePath();
    const bool moved =
        QFile::copy(source, directory + entry->fileInfo.fileName()) && QFile::remove(source);
    initialize();
    return moved;
}

void QvelCertificateModel::initialize()
{
    cleanup();
    d->root = std::make_unique<QvelCertificateEntry>();
    readDirectory(d->trustedPath, true);
    readDirectory(d->rejectedPath, false);
}

void QvelCertificateModel::cleanup()
{
    const int count = rowCount();
    if (count == 0)
        return;
    beginRemoveRows({}, 0, count - 1);
    d->root.reset();
    d->texts.clear();
    endRemoveRows();
}

void QvelCertificateModel::readDirectory(const QString& path, bool trusted)
{
    static const QStringList filters = {"*.cer", "*.der", "*.crt"};
    const QString ownFileName = QFileInfo(d->ownCertificateFile).fileName();
    const QFileInfoList files = QDir(path).entryInfoList(filters, QDir::Files);
    for (const QFileInfo& file : files) {
        const QByteArray name = file.absoluteFilePath().toLocal8Bit();
        UaPkiCertificate certificate = UaPkiCertificate::fromDERFile(name.constData());
        if (certificate.isNull() && trusted)
            certificate = UaPkiCertificate::fromPEMFile(name.constData());
        if (certificate.isNull())
            continue;

        auto entry = std::make_unique<QvelCertificateEntry>();
        entry->fileInfo = file;
        entry->certificate = certificate;
        if (trusted)
            entry->kind = file.fileName() == ownFileName ? QvelCertificateEntry::OwnCertificate
                                                         : QvelCertificateEntry::Trusted;
        const UaPkiIdentity& issuer = certificate.issuer();
        const UaPkiCertificateInfo& info = certificate.info();
        Private::Texts texts = {QVariant(), // the language may change
                                shown(certificate.commonName()),
                                localTime(certificate.validFrom()),
                                localTime(certificate.validTo()),
                                shown(issuer.organization),
                                shown(issuer.organizationUnit),
                                shown(issuer.locality),
                                shown(issuer.state),
                                shown(issuer.country),
                                shown(info.applicationUri),
                                shown(info.dnsName),
                                shown(info.ipAddress),
                                file.fileName()};
        const int row = d->root->childrenCount();
        beginInsertRows({}, row, row);
        d->root->add(entry.release());
        d->texts.push_back(std::move(texts));
        endInsertRows();
    }
}

#pragma once

#include "../kestrelexport.h"

#include <QtCore/QAbstractItemModel>

#include <memory>

class QIcon;

/// The certificates of an application's store on disk: a row for each file of its trusted and of
/// its rejected directory, thirteen columns.
///
/// Files named *.cer, *.der and *.crt are read, in the trusted directory as DER or PEM, in the
/// rejected one as DER; what is not a certificate, or larger than UaPkiCertificate::maxFileSize, is
/// not listed. The store is read at construction, by reload() and after each operation; the
/// directories are not watched. After each reading all rows are new. User-interface thread only.
class KESTREL_EXPORT QvelCertificateModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// `trustedPath` and `rejectedPath` end with a separator: a file's name is appended as it is
    /// to the directory that the file is moved to. `secondPath` and `thirdPath` are not read. The
    /// trusted certificate that is named like `ownCertificateFile`, in whatever directory, is the
    /// application's own and gets `ownCertificateIcon`.
    QvelCertificateModel(const QString& trustedPath, const QString& secondPath,
                         const QString& thirdPath, const QString& rejectedPath,
                         const QString& ownCertificateFile, const QIcon& ownCertificateIcon, bool,
                         QObject* parent = nullptr);
    ~QvelCertificateModel() override;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    /// Besides what is shown: Qt::UserRole is the QvelCertificateEntry::CertificateKind in column
    /// 0 and the absolute path in column 12. Texts are on one line and of bounded length.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

public Q_SLOTS:
    /// Reads the store again.
    void reload();
    /// Moves the file of `index` to the trusted directory. False when that failed, also because
    /// there is a file of that name; the file is still there then.
    bool sltTrust(QModelIndex index);
    /// As sltTrust(), to the rejected directory.
    bool sltReject(QModelIndex index);
    /// Removes the file of `index`. False when that failed.
    bool sltDelete(QModelIndex index);

private:
    void initialize();
    void cleanup();
    void readDirectory(const QString& path, bool trusted);
    bool move(const QModelIndex& index, const QString& directory);

    class Private;
    friend struct CertificateModelAccess; // whoever needs another clock
    std::unique_ptr<Private> d;
};

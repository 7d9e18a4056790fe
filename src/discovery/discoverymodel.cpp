#include "discoverymodel.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "discovery/discoverycbinterface.h"
#include "discovery/discoveryjob.h"
#include "discovery/discoverynodes_p.h"
#include "discovery/discoveryrequests_p.h"
#include "discovery/discoverystore_p.h"
#include "images/images_p.h"
#include "platform/network/uanetworkbrowser.h"
#include "platform/threads/uathreadpool.h"

#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtGui/QPalette>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <optional>
#include <utility>

static QString loopbackHost()
{
    return QStringLiteral("localhost");
}

class QvelDiscoveryModel::Private
{
public:
    Private(QvelDiscoveryWidget::OpcType opcType, QvelDiscoveryCBInterface* callback, int timeout,
            const QString& sessionName)
        : opcType(opcType), timeout(timeout), callback(callback), sessionName(sessionName)
    {
    }

    bool isOpcUa() const { return opcType == QvelDiscoveryWidget::OpcUa; }
    QString toolTip(QvelDiscoveryNode* node, const QvelDiscoverySetting* configuration) const;
    void nameEntries();

    QvelDiscoveryNode* root = nullptr;
    QvelDiscoveryNodeDiscovery* local = nullptr;
    QvelDiscoveryNodeNetwork* network = nullptr;
    QvelDiscoveryNode* custom = nullptr;
    QPointer<QvelDiscoveryNode> addServer; // a host may have the whole entry browsed
    QvelDiscoveryNode* recent = nullptr;
    UaNetworkBrowser browser;
    std::unique_ptr<UaThreadPool> pool = std::make_unique<UaThreadPool>(10, 30);
    DiscoveryRequests requests;
    StoredList<QvelDiscoverySetting> storedRecords{"NoOfRecentServers"};
    StoredList<QString> storedUrls{"NoOfDiscoveryServers"};
    bool failuresInToolTips = false;
    std::optional<QString> unreadLocalUrl; // the local node's, unless it came from the store
    const QvelDiscoveryWidget::OpcType opcType;
    const int timeout;
    QvelDiscoveryCBInterface* const callback;
    const QString sessionName;
    QHash<QString, QIcon> images;
    QHash<const QvelDiscoveryNode*, QString> names; // that the model has given
};

QvelDiscoveryModel::QvelDiscoveryModel(QvelDiscoveryWidget::OpcType opcType,
                                       QvelDiscoveryCBInterface* callback, int timeout,
                                       const QString& sessionName, QObject* parent)
    : QAbstractItemModel(parent),
      d(std::make_unique<Private>(opcType, callback, timeout, sessionName))
{
    initKestrelImages();
    qRegisterMetaType<QList<QvelDiscoveryNode*>>("QList<QvelDiscoveryNode*>");
    d->root = new QvelDiscoveryNode(QString(), this);
    const bool known = opcType == QvelDiscoveryWidget::OpcUa ||
                       opcType == QvelDiscoveryWidget::ComDa ||
                       opcType == QvelDiscoveryWidget::ComAe;
    if (known) {
        d->local = new QvelDiscoveryNodeDiscovery(
            d->isOpcUa() ? "opc.tcp://" + loopbackHost() + ":4840" : QString(), this);
        d->root->add(d->local);

        d->network = new QvelDiscoveryNodeNetwork(QString(), this, UaNetworkBrowseResult::Root);
        d->root->add(d->network);

        d->custom = new QvelDiscoveryNode(QString(), this);
        d->custom->setBrowsed(true);
        d->root->add(d->custom);
        d->addServer = new QvelDiscoveryNode("< Double click to Add Server... >", this);
        d->addServer->setBrowsed(true);
        d->custom->add(d->addServer);
    }
    d->recent = new QvelDiscoveryNode(QString(), this);
    d->recent->setBrowsed(true);
    d->root->add(d->recent);
    d->nameEntries();
    readSettings();
    whenLanguageChanges(this, [this] {
        d->nameEntries();
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, 0);
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0));
    });
}

QvelDiscoveryModel::~QvelDiscoveryModel()
{
    writeSettings();
    d->pool.reset(); // from here on, no other thread is about
    for (int cursors = d->requests.end(); cursors > 0; --cursors)
        QApplication::restoreOverrideCursor();
    delete d->root;
}

QModelIndex QvelDiscoveryModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column != 0)
        return QModelIndex();
    if (!parent.isValid())
        return createIndex(row, column, d->root->at(row));
    QvelDiscoveryNode* node = nodeAt(parent);
    QvelDiscoveryNode* child = node ? node->at(row) : nullptr;
    return child ? createIndex(row, column, child) : QModelIndex();
}

QModelIndex QvelDiscoveryModel::parent(const QModelIndex& index) const
{
    QvelDiscoveryNode* node = nodeAt(index);
    return node && node->parent() ? indexOf(node->parent()) : QModelIndex();
}

int QvelDiscoveryModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return d->root->childrenCount();
    QvelDiscoveryNode* node = nodeAt(parent);
    return node ? node->childrenCount() : 0;
}

int QvelDiscoveryModel::columnCount(const QModelIndex&) const
{
    return 1;
}

bool QvelDiscoveryModel::hasChildren(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return true;
    QvelDiscoveryNode* node = nodeAt(parent);
    return node && (!node->isBrowsed() || node->hasChildren());
}

bool QvelDiscoveryModel::canFetchMore(const QModelIndex& parent) const
{
    QvelDiscoveryNode* node = nodeAt(parent);
    return node && !node->isBrowsed();
}

void QvelDiscoveryModel::fetchMore(const QModelIndex& parent)
{
    QvelDiscoveryNode* node = nodeAt(parent);
    if (!node)
        return;
    if (node->hasChildren()) {
        beginRemoveRows(parent, 0, node->childrenCount() - 1);
        node->removeAll();
        endRemoveRows();
    }
    node->setBrowsed(true);
    node->setBrowsing(true);
    node->m_lastFailure.clear();
    Q_EMIT dataChanged(parent, parent);

    auto job = std::make_unique<QvelDiscoveryJob>(this, d->callback, parent, &d->browser,
                                                  d->timeout, d->sessionName);
    job->m_request = d->requests.add(node);
    QApplication::setOverrideCursor(Qt::BusyCursor);
    d->pool->addJob(job.release());
}

void QvelDiscoveryModel::fileResult(quint64 request, const QList<QvelDiscoveryNode*>& children,
                                    const QStringList& failure)
{
    d->requests.file(request, children, failure);
}

void QvelDiscoveryModel::sltAddChildren(QModelIndex parent, QList<QvelDiscoveryNode*> lstChildren)
{
    QvelDiscoveryNode* const address = nodeAt(parent);
    const DiscoveryRequests::Delivery delivery = d->requests.take(address, lstChildren);
    if (!delivery.isWanted) {
        qDeleteAll(lstChildren);
    } else {
        const QPointer<QvelDiscoveryNode> node(address); // it waits, so it lives
        append(node, lstChildren);
        if (node) {
            node->setBrowsing(false);
            node->m_lastFailure = delivery.failure;
            const QModelIndex index = indexOf(node); // the row may have changed since the request
            Q_EMIT dataChanged(index, index);
        }
    }
    if (delivery.endsBusyCursor)
        QApplication::restoreOverrideCursor();
}

void QvelDiscoveryModel::nodeDeleted(QvelDiscoveryNode* node)
{
    d->requests.forget(node);
}

void QvelDiscoveryModel::append(QvelDiscoveryNode* parent, const QList<QvelDiscoveryNode*>& nodes)
{
    if (nodes.isEmpty())
        return;
    const int first = parent->childrenCount();
    beginInsertRows(indexOf(parent), first, first + int(nodes.size()) - 1);
    for (QvelDiscoveryNode* node : nodes)
        parent->add(node);
    endInsertRows();
}

Qt::ItemFlags QvelDiscoveryModel::flags(const QModelIndex& index) const
{
    QvelDiscoveryNode* node = nodeAt(index);
    return node ? node->flags() : Qt::NoItemFlags;
}

bool QvelDiscoveryModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    QvelDiscoveryNode* node = nodeAt(index);
    return node && node->setData(value, role);
}

QVariant QvelDiscoveryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return tr("Item");
    return QVariant();
}

QVariant QvelDiscoveryModel::data(const QModelIndex& index, int role) const
{
    QvelDiscoveryNode* node = nodeAt(index);
    if (!node)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (d->isOpcUa() && node->parent() != d->recent) {
            if (QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(node))
                return shownText(endpoint->shortName());
        }
        return shownText(node->displayName());
    case Qt::DecorationRole:
        if (node->isBrowsing())
            return image(":/images/sandglass.png");
        if (node == d->custom || node == d->network)
            return image(":/images/globe.png");
        if (node == d->addServer)
            return image(":/images/serveradd.png");
        if (node == d->recent)
            return image(":/images/clock.png");
        return node->icon();
    case Qt::ToolTipRole: {
        QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(node);
        const QString text =
            shownText(d->toolTip(node, endpoint ? &endpoint->m_configuration : nullptr));
        if (!d->failuresInToolTips || node->lastFailure().isEmpty())
            return plainToolTip(text);
        return QStringLiteral("<p>%1</p><p>%2</p>")
            .arg(text.toHtmlEscaped(), node->lastFailure().toHtmlEscaped());
    }
    case Qt::ForegroundRole:
        if (node == d->addServer)
            return QApplication::palette().brush(QPalette::Current, QPalette::Link).color();
        return QVariant();
    default:
        return QVariant();
    }
}

// The entries of the top level, unless a host has given them other names.
void QvelDiscoveryModel::Private::nameEntries()
{
    const char* const customName = isOpcUa()
                                       ? QT_TRANSLATE_NOOP("QvelDiscoveryModel", "Custom Discovery")
                                       : QT_TRANSLATE_NOOP("QvelDiscoveryModel", "Custom Enum");
    const std::pair<QvelDiscoveryNode*, const char*> entries[] = {
        {local, QT_TRANSLATE_NOOP("QvelDiscoveryModel", "Local")},
        {network, QT_TRANSLATE_NOOP("QvelDiscoveryModel", "Local Network")},
        {custom, customName},
        {recent, QT_TRANSLATE_NOOP("QvelDiscoveryModel", "Recently Used")},
    };
    for (const auto& [node, name] : entries) {
        if (!node || names.value(node, node->displayName()) != node->displayName())
            continue;
        node->setDisplayName(QvelDiscoveryModel::tr(name));
        names[node] = node->displayName();
    }
}

QString QvelDiscoveryModel::Private::toolTip(QvelDiscoveryNode* node,
                                             const QvelDiscoverySetting* configuration) const
{
    if (configuration) {
        const QString url = configuration->endpointUrl();
        if (isOpcUa())
            return url;
        return (url.isEmpty() ? loopbackHost() : url) + "/" + configuration->serverName();
    }
    if (node->type() == QvelDiscoveryNode::TypeServer)
        return static_cast<QvelDiscoveryNodeServer*>(node)->serverDiscoveryUrl();
    return node->displayName();
}

QIcon QvelDiscoveryModel::image(const char* path) const
{
    QIcon& icon = d->images[QString::fromLatin1(path)];
    if (icon.isNull())
        icon = paletteIcon(QString::fromLatin1(path));
    return icon;
}

QModelIndex QvelDiscoveryModel::indexOf(QvelDiscoveryNode* node) const
{
    return node && node != d->root ? createIndex(node->row(), 0, node) : QModelIndex();
}

QvelDiscoveryNodeDiscovery* QvelDiscoveryModel::getLocalNode() const
{
    return d->local;
}

QvelDiscoveryNode* QvelDiscoveryModel::getAddServerNode() const
{
    return d->addServer;
}

QvelDiscoveryNode* QvelDiscoveryModel::getRecentNode() const
{
    return d->recent;
}

QvelDiscoveryWidget::OpcType QvelDiscoveryModel::opcType() const
{
    return d->opcType;
}

void QvelDiscoveryModel::setFailuresInToolTips(bool on)
{
    d->failuresInToolTips = on;
}

bool QvelDiscoveryModel::hasFailuresInToolTips() const
{
    return d->failuresInToolTips;
}

void QvelDiscoveryModel::addRemoteServer(const QString& url)
{
    if (d->custom && (!d->isOpcUa() || url.startsWith("opc.tcp:")))
        append(d->custom, {new QvelDiscoveryNodeDiscovery(url, this)});
}

void QvelDiscoveryModel::editUrl(const QModelIndex& index, const QString& url)
{
    QvelDiscoveryNodeDiscovery* node = toDiscovery(nodeAt(index));
    if (!node)
        return;
    if (node != d->local)
        node->setDisplayName(url);
    node->setDiscoveryUrl(url);
    Q_EMIT dataChanged(index, index);
    fetchMore(index);
}

void QvelDiscoveryModel::remove(const QModelIndex& index)
{
    QvelDiscoveryNode* node = nodeAt(index);
    if (!node || !node->parent() || node == d->local)
        return;
    QvelDiscoveryNode* parent = node->parent();
    if (!toDiscovery(node) && !(toEndpoint(node) && parent == d->recent))
        return;
    const int row = node->row();
    beginRemoveRows(indexOf(parent), row, row);
    parent->remove(node);
    endRemoveRows();
}

QModelIndex QvelDiscoveryModel::updateEndpointConfiguration(const QvelDiscoverySetting& setting,
                                                            const QModelIndex& current,
                                                            bool& accepted)
{
    accepted = true;
    QvelDiscoveryNodeEndpoint* currentEndpoint = toEndpoint(nodeAt(current));
    if (currentEndpoint && currentEndpoint->parent() == d->recent) {
        currentEndpoint->setConfiguration(setting);
        const QModelIndex index = indexOf(currentEndpoint);
        Q_EMIT dataChanged(index, index);
        return index;
    }

    // The tree may change, or go, while the question stands.
    QList<QPointer<QvelDiscoveryNode>> sameName;
    for (QvelDiscoveryNode* node : d->recent->children()) {
        if (node->displayName() == setting.displayName())
            sameName.append(node);
    }
    if (sameName.isEmpty()) {
        auto* node = new QvelDiscoveryNodeEndpoint(QString(), this);
        node->setConfiguration(setting);
        append(d->recent, {node});
        return indexOf(node);
    }
    const QPointer<QvelDiscoveryModel> self(this);
    QPointer<QvelDiscoveryNodeEndpoint> changed;
    for (const QPointer<QvelDiscoveryNode>& node : std::as_const(sameName)) {
        QPointer<QvelDiscoveryNodeEndpoint> endpoint(toEndpoint(node));
        if (!endpoint || endpoint->m_configuration == setting)
            continue;
        QMessageBox box(QMessageBox::Question, tr("Configuration already existing"),
                        tr("The 'Recently Used' list already contains a server configuration with "
                           "this name that differs from the current one. Do you want to overwrite "
                           "it?"),
                        QMessageBox::Ok | QMessageBox::Cancel);
        connect(this, &QObject::destroyed, &box, &QDialog::reject); // nobody to answer to
        const int answer = box.exec();
        if (!self)
            return QModelIndex();
        if (answer != QMessageBox::Ok) {
            accepted = false;
        } else if (endpoint) {
            endpoint->setConfiguration(setting);
            changed = endpoint;
            const QModelIndex index = indexOf(endpoint);
            Q_EMIT dataChanged(index, index);
        }
    }
    return indexOf(changed);
}

void QvelDiscoveryModel::readSettings()
{
    // Announces one row more than it adds, as no view is there yet to count them.
    const auto add = [this](QvelDiscoveryNode* parent, const QList<QvelDiscoveryNode*>& nodes) {
        if (nodes.isEmpty())
            return;
        const int first = parent->childrenCount();
        beginInsertRows(indexOf(parent), first, first + int(nodes.size()));
        for (QvelDiscoveryNode* node : nodes)
            parent->add(node);
        endInsertRows();
    };
    DiscoveryStore store(d->callback);
    QList<QvelDiscoveryNode*> nodes;
    for (QvelDiscoverySetting& record : d->storedRecords.read(store)) {
        auto* node = new QvelDiscoveryNodeEndpoint(QString(), this);
        node->setConfiguration(std::move(record));
        nodes.append(node);
    }
    add(d->recent, std::exchange(nodes, {}));
    if (d->custom) {
        for (const QString& url : d->storedUrls.read(store))
            nodes.append(new QvelDiscoveryNodeDiscovery(url, this));
        add(d->custom, nodes);
    }
    if (d->storedRecords.isTooLong() || d->storedUrls.isTooLong())
        d->callback->logMessage(
            tr("The settings hold more servers than can be read. They are left as they are."));
    if (!d->local)
        return;
    const QString localUrl = store.get("LocalDiscoveryUrl").toString();
    if (localUrl.isEmpty())
        d->unreadLocalUrl = d->local->discoveryUrl();
    else
        d->local->setDiscoveryUrl(localUrl);
}

// Reads first what could not be read at the beginning, and puts it behind what is there now.
void QvelDiscoveryModel::writeSettings()
{
    DiscoveryStore store(d->callback);
    const QList<QvelDiscoverySetting> moreRecords = d->storedRecords.readMissed(store);
    const QList<QString> moreUrls = d->custom ? d->storedUrls.readMissed(store) : QList<QString>();

    if (!d->storedRecords.isTooLong()) {
        const int count = d->recent->childrenCount();
        d->storedRecords.writeCount(store, count + int(moreRecords.size()));
        for (int k = 0; k < count; ++k) {
            if (QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(d->recent->at(k)))
                store.put(k, endpoint->m_configuration);
        }
        for (int k = 0; k < moreRecords.size(); ++k)
            store.put(count + k, moreRecords.at(k));
    }
    if (d->custom && !d->storedUrls.isTooLong()) {
        const int firstUrl = d->addServer ? 1 : 0;
        const int count = d->custom->childrenCount() - firstUrl;
        d->storedUrls.writeCount(store, count + int(moreUrls.size()));
        for (int k = 0; k < count; ++k) {
            if (QvelDiscoveryNodeDiscovery* node = toDiscovery(d->custom->at(firstUrl + k)))
                store.put(k, node->discoveryUrl());
        }
        for (int k = 0; k < moreUrls.size(); ++k)
            store.put(count + k, moreUrls.at(k));
    }
    if (!d->local)
        return;
    const QString url = d->local->discoveryUrl();
    if (d->unreadLocalUrl != url || isAbsent(store.get("LocalDiscoveryUrl")))
        store.put("LocalDiscoveryUrl", url);
}

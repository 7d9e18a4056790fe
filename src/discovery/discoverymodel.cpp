#include "discoverymodel.h"

#include "base/showntext_p.h"
#include "discovery/discoverycbinterface.h"
#include "discovery/discoveryjob.h"
#include "discovery/discoverylimits_p.h"
#include "discovery/discoverynodes_p.h"
#include "images/images_p.h"
#include "platform/network/uanetworkbrowser.h"
#include "platform/threads/uathreadpool.h"

#include <QtCore/QHash>
#include <QtCore/QMutex>
#include <QtCore/QPointer>
#include <QtGui/QPalette>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <algorithm>
#include <vector>

static QString loopbackHost()
{
    return QStringLiteral("localhost");
}

class QvelDiscoveryModel::Private
{
public:
    // A node that waits for a job. Pointers alone would not tell a node from a later one that got
    // the same address.
    struct Waiting
    {
        QvelDiscoveryNode* node;
        quint64 serial;
    };
    // A job that has not delivered. The nodes that it found are noted here until they are taken
    // over, so that none is lost with its message.
    struct Job
    {
        quint64 serial;            // 0 for a job that the model did not start
        QvelDiscoveryNode* parent; // may be deleted: to be compared only
        QList<QvelDiscoveryNode*> children;
        bool done;
        bool ownsCursor;
    };

    Private(QvelDiscoveryWidget::OpcType opcType, QvelDiscoveryCBInterface* callback, int timeout,
            const QString& sessionName)
        : opcType(opcType), timeout(timeout), callback(callback), sessionName(sessionName)
    {
    }

    bool isOpcUa() const { return opcType == QvelDiscoveryWidget::OpcUa; }
    QString toolTip(QvelDiscoveryNode* node, const QvelDiscoverySetting* configuration) const;
    bool take(QvelDiscoveryNode* node, const QList<QvelDiscoveryNode*>& children, quint64& serial,
              bool& ownsCursor);
    void stopWaiting(quint64 serial);

    QvelDiscoveryNode* root = nullptr;
    QvelDiscoveryNodeDiscovery* local = nullptr;
    QvelDiscoveryNodeNetwork* network = nullptr;
    QvelDiscoveryNode* custom = nullptr;
    QvelDiscoveryNode* addServer = nullptr;
    QvelDiscoveryNode* recent = nullptr;
    UaNetworkBrowser browser;
    std::unique_ptr<UaThreadPool> pool = std::make_unique<UaThreadPool>(10, 30);
    QMutex mutex; // guards the two lists
    std::vector<Waiting> browsing;
    std::vector<Job> jobs;
    quint64 lastSerial = 0;
    const QvelDiscoveryWidget::OpcType opcType;
    const int timeout;
    QvelDiscoveryCBInterface* const callback;
    const QString sessionName;
    QHash<QString, QIcon> images;
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
        d->local->setDisplayName(tr("Local"));
        d->root->add(d->local);

        d->network =
            new QvelDiscoveryNodeNetwork(tr("Local Network"), this, UaNetworkBrowseResult::Root);
        d->root->add(d->network);

        d->custom =
            new QvelDiscoveryNode(d->isOpcUa() ? tr("Custom Discovery") : tr("Custom Enum"), this);
        d->custom->setBrowsed(true);
        d->root->add(d->custom);
        d->addServer = new QvelDiscoveryNode("< Double click to Add Server... >", this);
        d->addServer->setBrowsed(true);
        d->custom->add(d->addServer);
    }
    d->recent = new QvelDiscoveryNode(tr("Recently Used"), this);
    d->recent->setBrowsed(true);
    d->root->add(d->recent);
    readSettings();
}

QvelDiscoveryModel::~QvelDiscoveryModel()
{
    writeSettings();
    d->pool.reset(); // from here on, no other thread is about
    std::vector<Private::Job> undelivered;
    {
        const QMutexLocker lock(&d->mutex);
        undelivered.swap(d->jobs);
    }
    for (const Private::Job& job : undelivered) {
        if (job.ownsCursor)
            QApplication::restoreOverrideCursor();
        qDeleteAll(job.children);
    }
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
    Q_EMIT dataChanged(parent, parent);

    auto job = std::make_unique<QvelDiscoveryJob>(this, d->callback, parent, &d->browser,
                                                  d->timeout, d->sessionName);
    const QMutexLocker lock(&d->mutex);
    job->m_serial = ++d->lastSerial;
    d->browsing.push_back({node, job->m_serial});
    d->jobs.push_back({job->m_serial, node, {}, false, true});
    QApplication::setOverrideCursor(Qt::BusyCursor);
    d->pool->addJob(job.release());
}

void QvelDiscoveryModel::fileResult(quint64 serial, const QModelIndex& parent,
                                    const QList<QvelDiscoveryNode*>& children)
{
    const QMutexLocker lock(&d->mutex);
    const auto job = std::find_if(d->jobs.begin(), d->jobs.end(), [serial](const auto& entry) {
        return serial && entry.serial == serial;
    });
    if (job == d->jobs.end()) {
        d->jobs.push_back({0, nodeAt(parent), children, true, false});
        return;
    }
    job->children = children;
    job->done = true;
}

// Whether `node` waits for `children`, and by what number. A delivery that no job filed is judged
// by the node's address, and takes over the cursor of the job that it forestalls.
bool QvelDiscoveryModel::Private::take(QvelDiscoveryNode* node,
                                       const QList<QvelDiscoveryNode*>& children, quint64& serial,
                                       bool& ownsCursor)
{
    const QMutexLocker lock(&mutex);
    const auto filed = std::find_if(jobs.begin(), jobs.end(), [&](const Job& job) {
        return job.done && job.parent == node && job.children == children;
    });
    serial = 0;
    ownsCursor = true;
    if (filed != jobs.end()) {
        serial = filed->serial;
        ownsCursor = filed->ownsCursor || !serial;
        jobs.erase(filed);
    }
    if (!serial) {
        const auto forestalled = std::find_if(jobs.begin(), jobs.end(), [node](const Job& job) {
            return job.parent == node && job.ownsCursor;
        });
        if (forestalled != jobs.end())
            forestalled->ownsCursor = false;
    }
    const auto waiting = std::find_if(browsing.begin(), browsing.end(), [&](const Waiting& entry) {
        return entry.node == node && (!serial || entry.serial == serial);
    });
    if (waiting == browsing.end())
        return false;
    serial = waiting->serial;
    return true;
}

void QvelDiscoveryModel::Private::stopWaiting(quint64 serial)
{
    const QMutexLocker lock(&mutex);
    const auto entry =
        std::find_if(browsing.begin(), browsing.end(),
                     [serial](const auto& waiting) { return waiting.serial == serial; });
    if (entry != browsing.end())
        browsing.erase(entry);
}

void QvelDiscoveryModel::sltAddChildren(QModelIndex parent, QList<QvelDiscoveryNode*> lstChildren)
{
    QvelDiscoveryNode* const address = nodeAt(parent);
    quint64 serial = 0;
    bool ownsCursor = true;
    if (!d->take(address, lstChildren, serial, ownsCursor)) {
        qDeleteAll(lstChildren);
    } else {
        const QPointer<QvelDiscoveryNode> node(address); // it waits, so it lives
        append(node, lstChildren);
        if (node) {
            node->setBrowsing(false);
            d->stopWaiting(serial);
            const QModelIndex index = indexOf(node); // the row may have changed since the request
            Q_EMIT dataChanged(index, index);
        }
    }
    if (ownsCursor)
        QApplication::restoreOverrideCursor();
}

void QvelDiscoveryModel::nodeDeleted(QvelDiscoveryNode* node)
{
    const QMutexLocker lock(&d->mutex);
    if (node == d->addServer)
        d->addServer = nullptr;
    d->browsing.erase(std::remove_if(d->browsing.begin(), d->browsing.end(),
                                     [node](const auto& waiting) { return waiting.node == node; }),
                      d->browsing.end());
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
        return shownToolTip(d->toolTip(node, endpoint ? &endpoint->m_configuration : nullptr));
    }
    case Qt::ForegroundRole:
        if (node == d->addServer)
            return QApplication::palette().brush(QPalette::Current, QPalette::Link).color();
        return QVariant();
    default:
        return QVariant();
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
        icon = QIcon(QString::fromLatin1(path));
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
        const auto answer = QMessageBox::question(
            nullptr, tr("Configuration already existing"),
            tr("The 'Recently Used' list already contains a server configuration with this name "
               "that differs from the current one. Do you want to overwrite it?"),
            QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::NoButton);
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

// Announces one row more than it adds, as no view is there yet to count them.
void QvelDiscoveryModel::readSettings()
{
    const auto isReadable = [](int count) { return count > 0 && count <= maxStoredEntries; };
    void* handle = d->callback->openSettings();
    const int recent = d->callback->readSetting(handle, "NoOfRecentServers").toInt();
    if (isReadable(recent)) {
        const int first = d->recent->childrenCount();
        beginInsertRows(indexOf(d->recent), first, first + recent);
        for (int k = 0; k < recent; ++k) {
            auto* node = new QvelDiscoveryNodeEndpoint(QString(), this);
            node->setConfiguration(QvelDiscoverySetting::fromSetting(
                d->callback, handle, QString("RecentServer%1.").arg(k)));
            d->recent->add(node);
        }
        endInsertRows();
    }
    const int servers = d->callback->readSetting(handle, "NoOfDiscoveryServers").toInt();
    if (d->custom && isReadable(servers)) {
        const int first = d->custom->childrenCount();
        beginInsertRows(indexOf(d->custom), first, first + servers);
        for (int k = 0; k < servers; ++k) {
            const QString key = QString("DiscoveryServer%1").arg(k);
            d->custom->add(new QvelDiscoveryNodeDiscovery(
                d->callback->readSetting(handle, key).toString(), this));
        }
        endInsertRows();
    }
    const QString localUrl = d->callback->readSetting(handle, "LocalDiscoveryUrl").toString();
    if (d->local && !localUrl.isEmpty())
        d->local->setDiscoveryUrl(localUrl);
    d->callback->closeSettings(handle);
}

void QvelDiscoveryModel::writeSettings()
{
    void* handle = d->callback->openSettings();
    d->callback->writeSetting(handle, "NoOfRecentServers", d->recent->childrenCount());
    for (int k = 0; k < d->recent->childrenCount(); ++k) {
        if (QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(d->recent->at(k)))
            endpoint->m_configuration.storeSettings(d->callback, handle,
                                                    QString("RecentServer%1.").arg(k));
    }
    if (d->custom) {
        const int firstUrl = d->addServer ? 1 : 0;
        d->callback->writeSetting(handle, "NoOfDiscoveryServers",
                                  d->custom->childrenCount() - firstUrl);
        for (int k = firstUrl; k < d->custom->childrenCount(); ++k) {
            if (QvelDiscoveryNodeDiscovery* node = toDiscovery(d->custom->at(k)))
                d->callback->writeSetting(handle, QString("DiscoveryServer%1").arg(k - firstUrl),
                                          node->discoveryUrl());
        }
    }
    if (d->local)
        d->callback->writeSetting(handle, "LocalDiscoveryUrl", d->local->discoveryUrl());
    d->callback->closeSettings(handle);
}

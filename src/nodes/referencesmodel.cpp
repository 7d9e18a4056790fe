#include "referencesmodel.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "nodes/nodetable_p.h"
#include "nodes/statustext_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "session/session.h"
#include "session/whendone_p.h"

#include <QtCore/QMimeData>
#include <QtCore/QTimer>

class QvelReferencesModel::Private : public QObject
{
public:
    explicit Private(QvelReferencesModel* model) : q(model)
    {
        connect(&table, &NodeTable::connected, this, [this] {
            setStale(false);
            q->refresh();
        });
        connect(&table, &NodeTable::lost, this, [this] { setStale(true); });
        connect(&table, &NodeTable::typeNamesChanged, this, &Private::touch);
        timer.callOnTimeout(this, &Private::takeSome);
    }

    void touch()
    {
        if (!rows.empty())
            Q_EMIT q->dataChanged(q->index(0, 0), q->index(int(rows.size()) - 1, ColumnCount - 1));
    }
    void setStale(bool stale)
    {
        isStale = stale && !rows.empty();
        touch();
    }
    void clear()
    {
        ++question;
        timer.stop();
        fresh.clear();
        intake = ReferenceIntake();
        q->beginResetModel();
        rows.clear();
        isStale = false;
        q->endResetModel();
    }
    void answer(QvelBrowseResult result);
    void takeSome();
    void append(std::vector<CompactNode> nodes);

    QvelReferencesModel* const q;
    NodeTable table{nullptr};
    UaExpandedNodeId node;
    std::vector<CompactNode> rows;
    std::vector<CompactNode> fresh; // taken in, to be compared with the rows
    ReferenceIntake intake;
    UaStatusCode failure; // of the message at the end
    QTimer timer;
    quint32 question = 0; // answers to an earlier one are dropped
    bool isStale = false;
};

QvelReferencesModel::QvelReferencesModel(QObject* parent)
    : QAbstractTableModel(parent), d(std::make_unique<Private>(this))
{
    whenLanguageChanges(this, [this] {
        if (!d->rows.empty() && d->rows.back().isMessage())
            d->rows.back().setMessage(statusInWords(d->failure));
        d->touch();
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    });
}

QvelReferencesModel::~QvelReferencesModel() = default;

void QvelReferencesModel::setSession(QvelSession* session)
{
    d->table.setSession(nullptr);
    d->clear();
    d->table.setSession(session); // reads where it is connected
}

QvelSession* QvelReferencesModel::session() const
{
    return d->table.session();
}

UaExpandedNodeId QvelReferencesModel::node() const
{
    return d->node;
}

bool QvelReferencesModel::isStale() const
{
    return d->isStale;
}

void QvelReferencesModel::setNode(const UaExpandedNodeId& id)
{
    if (id == d->node)
        return;
    d->node = id;
    d->clear();
    refresh();
}

void QvelReferencesModel::refresh()
{
    if (!d->table.isConnected() || (d->node.nodeId().isNull() && d->node.namespaceUri().isEmpty()))
        return;
    QvelBrowseItem item;
    item.nodeId = d->table.nodeId(d->table.key(d->node));
    item.direction = QvelBrowseDirection::Both;
    item.referenceTypeId = UaNodeId();
    const auto take = [this, question = ++d->question](QvelBrowseResult result) {
        if (question == d->question)
            d->answer(std::move(result));
    };
    takeWhenDone(session()->browse({item}), d.get(), take);
}

void QvelReferencesModel::Private::answer(QvelBrowseResult result)
{
    UaStatusCode status = result.status;
    fresh.clear();
    intake = ReferenceIntake();
    if (!status.isBad() && !result.results.isEmpty()) {
        status = result.results[0].status;
        intake = ReferenceIntake(std::move(result.results[0].references));
    }
    if (status.isBad() && intake.size() == 0 && !rows.empty() && !rows.back().isMessage()) {
        failure = status;
        std::vector<CompactNode> message; // below what is known of before
        message.emplace_back(statusInWords(status), true);
        return append(std::move(message));
    }
    failure = status;
    timer.start(0);
}

void QvelReferencesModel::Private::append(std::vector<CompactNode> nodes)
{
    if (nodes.empty())
        return;
    const int first = int(rows.size());
    q->beginInsertRows({}, first, first + int(nodes.size()) - 1);
    std::move(nodes.begin(), nodes.end(), std::back_inserter(rows));
    q->endInsertRows();
}

void QvelReferencesModel::Private::takeSome()
{
    QElapsedTimer clock;
    clock.start();
    intake.take(clock, [this](const QvelReference& r) { fresh.emplace_back(table, r); });
    if (!intake.isDone())
        return;
    timer.stop();
    if (failure.isBad())
        fresh.emplace_back(statusInWords(failure), true);
    const auto isSame = [](const CompactNode& a, const CompactNode& b) {
        return !a.isMessage() && a.isSame(b);
    };
    if (fresh.size() == rows.size() &&
        std::equal(rows.begin(), rows.end(), fresh.begin(), isSame)) {
        rows = std::exchange(fresh, {});
        return touch();
    }
    if (!rows.empty()) {
        q->beginResetModel();
        rows.clear();
        q->endResetModel();
    }
    append(std::exchange(fresh, {}));
}

UaExpandedNodeId QvelReferencesModel::nodeId(const QModelIndex& index) const
{
    return index.isValid() ? d->table.id(d->rows[std::size_t(index.row())].key())
                           : UaExpandedNodeId();
}

int QvelReferencesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(d->rows.size());
}

int QvelReferencesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

Qt::ItemFlags QvelReferencesModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    const bool isMessage = d->rows[std::size_t(index.row())].isMessage();
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return isMessage ? flags : flags | Qt::ItemIsDragEnabled;
}

QVariant QvelReferencesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const CompactNode& row = d->rows[std::size_t(index.row())];
    const bool isForward = (row.flags & CompactNode::Inverse) == 0;
    const auto text = [&]() -> QString {
        const QString name = row.shownName();
        switch (row.isMessage() ? -1 : index.column()) {
        case ReferenceType:
            if (isForward)
                return d->table.typeName(row.referenceType);
            return d->table.inverseName(row.referenceType).isEmpty()
                       ? tr("%1 (inverse)").arg(d->table.typeName(row.referenceType))
                       : d->table.inverseName(row.referenceType);
        case Target:
            return name.isEmpty() ? shownText(d->table.idText(row.key())) : name;
        case NodeId:
            return leftToRight(shownText(d->table.idText(row.key())));
        case NodeClass:
            return nodeClassName(row.nodeClass);
        case TypeDefinition:
            return d->table.typeName(row.typeDefinition);
        default:
            return row.isMessage() && index.column() == 0 ? name : QString();
        }
    };
    switch (role) {
    case Qt::DisplayRole:
        return text();
    case Qt::DecorationRole:
        return index.column() == (row.isMessage() ? 0 : Target) ? QVariant(d->table.icon(row))
                                                                : QVariant();
    case Qt::ForegroundRole:
        return staleForeground(d->isStale);
    case Qt::ToolTipRole: {
        QStringList lines = {text()};
        if (!row.isMessage())
            lines.append(isForward ? tr("From this node") : tr("To this node"));
        if (d->isStale)
            lines.append(staleSentence());
        return plainToolTip(lines.join(u'\n'));
    }
    case NodeIdRole:
        return QVariant::fromValue(nodeId(index));
    case NodeClassRole:
        return row.nodeClass;
    case FailureRole:
        return (row.flags & CompactNode::Failed) != 0;
    case IsForwardRole:
        return isForward;
    default:
        return {};
    }
}

QVariant QvelReferencesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= ColumnCount)
        return {};
    const QString titles[] = {tr("Reference"), tr("Target"), tr("NodeId"), tr("Class"), tr("Type")};
    return titles[section];
}

QStringList QvelReferencesModel::mimeTypes() const
{
    return std::unique_ptr<QMimeData>(qvelNodeMimeData({}))->formats();
}

QMimeData* QvelReferencesModel::mimeData(const QModelIndexList& indexes) const
{
    QList<QvelNodeLink> links;
    for (const QModelIndex& index : indexes) {
        const CompactNode& row = d->rows[std::size_t(index.row())];
        if (index.column() == Target && !row.isMessage())
            links.append({nodeId(index), row.displayName()});
    }
    return links.isEmpty() ? nullptr : qvelNodeMimeData(links);
}

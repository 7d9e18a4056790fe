#include "addressspacemodel.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "base/words_p.h"
#include "nodes/nodetable_p.h"
#include "nodes/statustext_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "session/session.h"
#include "session/whendone_p.h"

#include <QtCore/QLocale>
#include <QtCore/QMimeData>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QTimer>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr OpcUa_UInt32 rootFolder = 84;
constexpr OpcUa_UInt32 hasTypeDefinition = 40;
constexpr OpcUa_UInt32 aggregates = 44;
constexpr OpcUa_UInt32 hierarchicalReferences = 33;
// Rows that are put into the tree at a time, to begin with. Views lay all rows out again for each
// time, therefore it doubles.
constexpr std::size_t firstPage = 2000;
// From this many rows on, views get some time to lay them out before more is taken in.
constexpr std::size_t manyRows = 16'000;
constexpr auto layoutTime = 20ms;
constexpr auto patience = 300ms; // before a row says that an answer is waited for
// Nodes on the ways up from a node, before it counts as one that cannot be reached.
constexpr qsizetype mostAncestors = 100'000;
// Places at which rows come and go in one refresh, before all rows between them are exchanged.
constexpr int mostPlaces = 500;

constexpr char reserved[] = "/.<>:#!&"; // in a browse path

struct Branch;
struct Node : CompactNode
{
    using CompactNode::CompactNode;
    ~Node();
    Node* parent = nullptr;
    std::unique_ptr<Branch> branch; // null for what was never browsed
    quint32 row = 0;
};
using Nodes = std::vector<std::unique_ptr<Node>>;

/// A question for the children of a node. It is dropped with its branch, or by the next question:
/// answers come to those that are still there.
struct Fetch
{
    Node* node = nullptr;
    bool isFirst = true; // nothing is shown yet, and each piece is shown when it is there
    bool isAnswered = false;
    Words failure;
    bool isGone = false; // the node itself
    ReferenceIntake intake;
    Nodes fresh; // taken in and not shown yet
    std::size_t page = firstPage;
};
// For whoever holds one while others are told of what it brought.
bool isDropped(const std::shared_ptr<Fetch>& fetch)
{
    return fetch.use_count() == 1;
}

struct Branch
{
    Nodes children; // the last of them may be a message
    std::shared_ptr<Fetch> fetch;
    Words message;

    qsizetype nodeCount() const
    {
        const auto size = qsizetype(children.size());
        return size > 0 && children.back()->isMessage() ? size - 1 : size;
    }
};
Node::~Node() = default;

void renumber(Branch& branch, Node* parent, std::size_t from)
{
    for (std::size_t row = from; row < branch.children.size(); ++row) {
        branch.children[row]->row = quint32(row);
        branch.children[row]->parent = parent;
    }
}

QByteArray sameKey(const Node& node)
{
    return node.key().toByteArray() +
           QByteArray::fromRawData(reinterpret_cast<const char*>(&node.referenceType),
                                   sizeof node.referenceType);
}

/// The way down to a node.
struct Descent
{
    QList<QByteArray> keys;   // from the root node
    qsizetype askedDepth = 0; // below the node at this depth, the server has been asked
};
/// The search for a way up.
struct Ascent
{
    QByteArray target;
    QHash<QByteArray, QByteArray> below; // an ancestor and the node that led to it
    QList<QByteArray> frontier;
};

QString escaped(const QString& name)
{
    QString text;
    for (const QChar c : name) {
        if (c.unicode() < 128 && strchr(reserved, c.toLatin1()) && c != QChar())
            text += u'&';
        text += c;
    }
    return text;
}

/// Reads a name up to the next separator; false where it is none.
bool takeElement(const QString& text, qsizetype& at, QvelPathElement& element)
{
    QString name;
    OpcUa_UInt16 space = 0;
    bool ok = true;
    for (; ok && at < text.size() && text[at] != u'/' && text[at] != u'.'; ++at) {
        if (text[at] == u'&' && at + 1 < text.size()) {
            name += text[++at];
        } else if (text[at] == u':' && space == 0) {
            space = name.toUShort(&ok);
            name.clear();
        } else {
            ok = text[at] != u'<' && text[at] != u'&';
            name += text[at];
        }
    }
    element.targetName = UaQualifiedName(UaString(name), space);
    return ok && !name.isEmpty();
}

std::optional<QList<QvelPathElement>> parseBrowsePath(const QString& text)
{
    QList<QvelPathElement> elements;
    for (qsizetype at = 0; at < text.size();) {
        QvelPathElement element;
        element.referenceTypeId = UaNodeId(text[at] == u'.' ? aggregates : hierarchicalReferences);
        if (!takeElement(text, ++at, element))
            return {};
        elements.append(element);
    }
    return elements;
}

} // namespace

class QvelAddressSpaceModel::Private : public QObject
{
public:
    explicit Private(QvelAddressSpaceModel* model) : q(model)
    {
        connect(&table, &NodeTable::connected, this, &Private::begin);
        connect(&table, &NodeTable::lost, this, [this] { setStale(true); });
        connect(&table, &NodeTable::typeNamesChanged, this,
                [this] { touch(TypeDefinition, TypeDefinition); });
        timer.callOnTimeout(this, &Private::takeSome);
    }

    Node* nodeAt(const QModelIndex& index) const
    {
        return static_cast<Node*>(index.internalPointer());
    }
    QModelIndex indexOf(const Node* node, int column = 0) const
    {
        return node ? q->createIndex(int(node->row), column, const_cast<Node*>(node))
                    : QModelIndex();
    }
    /// Calls `function` with each node, parents first, until one gives false.
    template <class Function>
    void walk(Node* top, Function function) const
    {
        std::vector<Node*> open;
        if (top)
            open.push_back(top);
        while (!open.empty()) {
            Node* node = open.back();
            open.pop_back();
            if (!function(*node))
                return;
            if (node->branch)
                for (const auto& child : node->branch->children)
                    open.push_back(child.get());
        }
    }
    /// Everything that is shown in these columns may have changed.
    void touch(int firstColumn, int lastColumn)
    {
        if (!root)
            return;
        Q_EMIT q->dataChanged(indexOf(root.get(), firstColumn), indexOf(root.get(), lastColumn));
        std::vector<Node*> parents;
        walk(root.get(), [&parents](Node& node) {
            if (node.branch && !node.branch->children.empty())
                parents.push_back(&node);
            return true;
        });
        for (const Node* parent : parents)
            Q_EMIT q->dataChanged(indexOf(parent->branch->children.front().get(), firstColumn),
                                  indexOf(parent->branch->children.back().get(), lastColumn));
    }
    void setStale(bool stale)
    {
        if (isStale == stale || !root)
            return;
        isStale = stale;
        touch(0, ColumnCount - 1);
        Q_EMIT q->staleChanged(stale);
    }

    void clear();
    void begin();
    void readRoot();
    void fetch(Node& node);
    void answer(const std::shared_ptr<Fetch>& fetch, QvelBrowseResult result);
    void enqueue(const std::shared_ptr<Fetch>& fetch);
    void takeSome();
    bool takeOf(const std::shared_ptr<Fetch>& fetch, const QElapsedTimer& clock);
    void finish(const std::shared_ptr<Fetch>& fetch);
    void insert(Node& parent, std::size_t row, Nodes nodes);
    void remove(Node& parent, std::size_t first, std::size_t last);
    void say(Node& parent, const Words& words, bool isFailure);
    void retranslate();
    void merge(Node& parent, Nodes fresh);
    void exchange(Node& parent, std::size_t begin, std::size_t end, Nodes fresh);

    void fail(const QString& reason)
    {
        descent.reset();
        ascent.reset();
        Q_EMIT q->locateFailed(reason);
    }
    bool failUnconnected()
    {
        const bool isUnconnected = !table.isConnected();
        if (isUnconnected)
            fail(QvelAddressSpaceModel::tr("The session is not connected."));
        return isUnconnected;
    }
    void ascend();
    void climb(const QvelBrowseResult& result);
    void descend();

    QvelAddressSpaceModel* const q;
    NodeTable table{nullptr};
    UaExpandedNodeId rootId{UaNodeId(rootFolder), UaString(), 0};
    std::unique_ptr<Node> root;
    bool isStale = false;
    std::shared_ptr<int> tree; // made anew with each tree
    QList<std::weak_ptr<Fetch>> queue;
    QTimer timer;
    std::optional<Descent> descent;
    std::shared_ptr<Ascent> ascent;
};

QvelAddressSpaceModel::QvelAddressSpaceModel(QObject* parent)
    : QAbstractItemModel(parent), d(std::make_unique<Private>(this))
{
    whenLanguageChanges(this, [this] { d->retranslate(); });
}

QvelAddressSpaceModel::~QvelAddressSpaceModel() = default;

void QvelAddressSpaceModel::Private::clear()
{
    descent.reset();
    ascent.reset();
    queue.clear();
    tree.reset();
    if (root) {
        q->beginResetModel();
        root.reset();
        q->endResetModel();
    }
    if (std::exchange(isStale, false))
        Q_EMIT q->staleChanged(false);
}

void QvelAddressSpaceModel::setSession(QvelSession* session)
{
    const QPointer<QvelAddressSpaceModel> alive(this);
    d->table.setSession(nullptr);
    d->clear();
    if (alive)
        d->table.setSession(session); // begins where it is connected
}

QvelSession* QvelAddressSpaceModel::session() const
{
    return d->table.session();
}

void QvelAddressSpaceModel::setRootNode(const UaExpandedNodeId& id)
{
    const QPointer<QvelAddressSpaceModel> alive(this);
    d->rootId = id;
    d->clear();
    if (alive && d->table.isConnected())
        d->begin();
}

UaExpandedNodeId QvelAddressSpaceModel::rootNode() const
{
    return d->rootId;
}

bool QvelAddressSpaceModel::isStale() const
{
    return d->isStale;
}

void QvelAddressSpaceModel::Private::begin()
{
    if (root) {
        q->refresh();
        return setStale(false);
    }
    tree = std::make_shared<int>();
    q->beginInsertRows({}, 0, 0);
    root = std::make_unique<Node>(table.key(rootId));
    q->endInsertRows();
    readRoot();
}

// The names of the root node, which no reference tells.
void QvelAddressSpaceModel::Private::readRoot()
{
    const UaNodeId id = table.nodeId(root->key());
    QList<QvelReadItem> items;
    for (const auto attribute :
         {QvelAttribute::NodeClass, QvelAttribute::BrowseName, QvelAttribute::DisplayName})
        items.append({id, attribute, {}, {}});
    const auto told = [guard = std::weak_ptr<int>(tree)] { return !guard.expired(); };
    whenDone(table.session()->read(items), this, [this, told](const QvelReadResult& result) {
        if (!told() || result.status.isBad())
            return; // the row of its children tells
        root->nodeClass = quint8(result.values.value(0).value().toInt32());
        root->setNames(result.values.value(1).value().toQualifiedName(),
                       result.values.value(2).value().toLocalizedText(), table);
        const bool isGone = result.values.value(0).status().isBad();
        root->flags = isGone ? CompactNode::Failed : 0;
        Q_EMIT q->dataChanged(indexOf(root.get()), indexOf(root.get(), ColumnCount - 1));
    });
    QvelBrowseItem type;
    type.nodeId = id;
    type.referenceTypeId = UaNodeId(hasTypeDefinition);
    whenDone(table.session()->browse({type}), this, [this, told](const QvelBrowseResult& result) {
        const auto references = result.results.value(0).references;
        if (!told() || references.isEmpty())
            return;
        root->typeDefinition = table.type(table.key(references.first().nodeId));
        Q_EMIT q->dataChanged(indexOf(root.get()), indexOf(root.get(), ColumnCount - 1));
    });
}

void QvelAddressSpaceModel::Private::fetch(Node& node)
{
    if (!node.branch)
        node.branch = std::make_unique<Branch>();
    const auto fetch = node.branch->fetch = std::make_shared<Fetch>();
    fetch->node = &node;
    fetch->isFirst = node.branch->nodeCount() == 0;
    const UaExpandedNodeId id = table.id(node.key());
    const UaNodeId local = table.nodeId(node.key());
    if (local.isNull()) {
        fetch->failure = [id] {
            return id.serverIndex() != 0
                       ? QvelAddressSpaceModel::tr("The node is on another server.")
                       : QvelAddressSpaceModel::tr("The server no longer has the namespace %1.")
                             .arg(id.namespaceUri().toQString());
        };
        return enqueue(fetch);
    }
    const std::weak_ptr<Fetch> guard = fetch;
    takeWhenDone(table.session()->browse({{local}}), this, [this, guard](QvelBrowseResult result) {
        if (const auto asked = guard.lock())
            answer(asked, std::move(result));
    });
    QTimer::singleShot(patience, this, [this, guard] {
        const auto asked = guard.lock();
        if (asked && !asked->isAnswered && asked->node->branch->children.empty())
            say(
                *asked->node, [] { return QvelAddressSpaceModel::tr("Loading..."); }, false);
    });
}

void QvelAddressSpaceModel::Private::answer(const std::shared_ptr<Fetch>& fetch,
                                            QvelBrowseResult result)
{
    UaStatusCode status = result.status;
    if (!status.isBad() && !result.results.isEmpty()) {
        status = result.results[0].status;
        fetch->isGone = status == UaStatusCode(OpcUa_BadNodeIdUnknown);
        fetch->intake = ReferenceIntake(std::move(result.results[0].references));
    }
    if (status.isBad()) {
        const auto size = fetch->intake.size();
        fetch->failure = [status, reason = result.reason, size] {
            QString text = statusInWords(status);
            if (!reason.isEmpty())
                text += QStringLiteral(" (%1)").arg(reason.toQString());
            if (size > 0)
                text += u' ' + QvelAddressSpaceModel::tr("%1 children came before that.")
                                   .arg(QLocale().toString(size));
            return text;
        };
        if (!fetch->isFirst) // which of the others are gone is not known
            fetch->intake = ReferenceIntake();
    }
    enqueue(fetch);
}

void QvelAddressSpaceModel::Private::enqueue(const std::shared_ptr<Fetch>& fetch)
{
    fetch->isAnswered = true;
    queue.append(fetch);
    if (!timer.isActive())
        timer.start(0);
}

void QvelAddressSpaceModel::Private::takeSome()
{
    QElapsedTimer clock;
    clock.start();
    auto pause = 0ms;
    while (!queue.isEmpty() && pause == 0ms && !clock.hasExpired(ReferenceIntake::milliseconds)) {
        const std::shared_ptr<Fetch> fetch = queue.first().lock();
        const std::size_t page = fetch ? fetch->page : 0; // grows as rows are put in
        const bool isDone = !fetch || takeOf(fetch, clock);
        if (fetch && fetch->page != page && page >= manyRows)
            pause = layoutTime;
        if (isDone)
            if (!queue.isEmpty() && queue.first().lock() == fetch)
                queue.removeFirst();
    }
    timer.setInterval(pause);
    if (queue.isEmpty())
        timer.stop();
}

// Whether all of it is done, or it was dropped meanwhile by those who heard of it.
bool QvelAddressSpaceModel::Private::takeOf(const std::shared_ptr<Fetch>& fetch,
                                            const QElapsedTimer& clock)
{
    fetch->intake.take(clock, [&](const QvelReference& reference) {
        if (reference.isForward)
            fetch->fresh.push_back(std::make_unique<Node>(table, reference));
    });
    if (fetch->isFirst && (fetch->fresh.size() >= fetch->page || fetch->intake.isDone())) {
        fetch->page *= 2;
        Branch& branch = *fetch->node->branch;
        if (!branch.children.empty() && branch.children.back()->isMessage())
            remove(*fetch->node, branch.children.size() - 1, branch.children.size() - 1);
        if (!isDropped(fetch))
            insert(*fetch->node, fetch->node->branch->children.size(),
                   std::exchange(fetch->fresh, {}));
        if (isDropped(fetch))
            return true;
        if (!fetch->intake.isDone())
            descend();
    }
    if (!fetch->intake.isDone())
        return isDropped(fetch);
    finish(fetch);
    return true;
}

void QvelAddressSpaceModel::Private::finish(const std::shared_ptr<Fetch>& fetch)
{
    Node& node = *fetch->node;
    if (!fetch->isFirst && !fetch->failure)
        merge(node, std::move(fetch->fresh));
    if (isDropped(fetch))
        return;
    say(node, fetch->failure, true);
    if (isDropped(fetch))
        return;
    const quint8 flags =
        quint8((node.flags & ~CompactNode::Failed) | (fetch->isGone ? CompactNode::Failed : 0));
    if (node.flags != flags) {
        node.flags = flags;
        Q_EMIT q->dataChanged(indexOf(&node), indexOf(&node, ColumnCount - 1));
    }
    if (isDropped(fetch))
        return;
    node.branch->fetch.reset();
    if (node.branch->children.empty()) { // for views to take the mark of a closed branch away
        const QList<QPersistentModelIndex> parents = {indexOf(&node)};
        Q_EMIT q->layoutAboutToBeChanged(parents);
        Q_EMIT q->layoutChanged(parents);
    }
    descend();
}

void QvelAddressSpaceModel::Private::insert(Node& parent, std::size_t row, Nodes nodes)
{
    if (nodes.empty())
        return;
    auto& children = parent.branch->children;
    q->beginInsertRows(indexOf(&parent), int(row), int(row + nodes.size() - 1));
    children.insert(children.begin() + std::ptrdiff_t(row), std::make_move_iterator(nodes.begin()),
                    std::make_move_iterator(nodes.end()));
    renumber(*parent.branch, &parent, row);
    q->endInsertRows();
}

void QvelAddressSpaceModel::Private::remove(Node& parent, std::size_t first, std::size_t last)
{
    auto& children = parent.branch->children;
    q->beginRemoveRows(indexOf(&parent), int(first), int(last));
    children.erase(children.begin() + std::ptrdiff_t(first),
                   children.begin() + std::ptrdiff_t(last) + 1);
    renumber(*parent.branch, &parent, first);
    q->endRemoveRows();
}

// In another language than before: messages, and the names of classes.
void QvelAddressSpaceModel::Private::retranslate()
{
    walk(root.get(), [](const Node& node) {
        if (node.branch && node.branch->nodeCount() < qsizetype(node.branch->children.size()))
            node.branch->children.back()->setMessage(said(node.branch->message));
        return true;
    });
    touch(0, ColumnCount - 1);
    Q_EMIT q->headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

// Replaces the message below a node; an empty one stands for none.
void QvelAddressSpaceModel::Private::say(Node& parent, const Words& words, bool isFailure)
{
    const QString message = said(words);
    parent.branch->message = words;
    const std::weak_ptr<int> guard = tree;
    auto& children = parent.branch->children;
    if (!children.empty() && children.back()->isMessage()) {
        if (children.back()->displayName() == message)
            return;
        remove(parent, children.size() - 1, children.size() - 1);
    }
    if (message.isEmpty() || guard.expired())
        return;
    Nodes nodes;
    nodes.push_back(std::make_unique<Node>(message, isFailure));
    insert(parent, children.size(), std::move(nodes));
}

// Turns the children into the fresh ones; those that were there stay themselves, with all below.
void QvelAddressSpaceModel::Private::merge(Node& parent, Nodes fresh)
{
    auto& children = parent.branch->children;
    std::size_t oldEnd = std::size_t(parent.branch->nodeCount());
    std::size_t newEnd = fresh.size();
    std::size_t begin = 0;
    while (begin < oldEnd && begin < newEnd && children[begin]->isSame(*fresh[begin]))
        ++begin;
    while (oldEnd > begin && newEnd > begin && children[oldEnd - 1]->isSame(*fresh[newEnd - 1])) {
        --oldEnd;
        --newEnd;
    }
    std::size_t firstChange = children.size();
    std::size_t lastChange = 0;
    const auto update = [&](std::size_t row, CompactNode& newer) {
        newer.flags |= children[row]->flags & CompactNode::Failed; // until it is browsed itself
        if (children[row]->update(newer)) {
            firstChange = std::min(firstChange, row);
            lastChange = std::max(lastChange, row);
        }
    };
    for (std::size_t row = 0; row < begin; ++row)
        update(row, *fresh[row]);
    for (std::size_t i = 0; newEnd + i < fresh.size(); ++i)
        update(oldEnd + i, *fresh[newEnd + i]);
    const std::weak_ptr<int> guard = tree;
    if (firstChange <= lastChange)
        Q_EMIT q->dataChanged(indexOf(children[firstChange].get()),
                              indexOf(children[lastChange].get(), ColumnCount - 1));
    if (guard.expired() || (oldEnd == begin && newEnd == begin))
        return;
    fresh.erase(fresh.begin() + std::ptrdiff_t(newEnd), fresh.end());
    fresh.erase(fresh.begin(), fresh.begin() + std::ptrdiff_t(begin));
    exchange(parent, begin, oldEnd, std::move(fresh));
}

// Those between two rows, where something else is now.
void QvelAddressSpaceModel::Private::exchange(Node& parent, std::size_t begin, std::size_t end,
                                              Nodes fresh)
{
    auto& children = parent.branch->children;
    QHash<QByteArray, std::size_t> places;
    for (std::size_t i = 0; i < fresh.size(); ++i)
        places.insert(sameKey(*fresh[i]), i);
    const auto placeOf = [&](std::size_t row) {
        const auto found = places.constFind(sameKey(*children[row]));
        return found == places.cend() ? fresh.size() : *found;
    };
    // Take away what is gone, in runs from the end; all of it where that would be too many runs.
    int runs = 0;
    for (std::size_t row = begin; row < end; ++row)
        runs += placeOf(row) == fresh.size() && (row == begin || placeOf(row - 1) != fresh.size());
    const bool isAll = runs > mostPlaces;
    for (std::size_t row = end; row > begin;) {
        const std::size_t last = --row;
        if (!isAll && placeOf(last) != fresh.size())
            continue;
        while (row > begin && (isAll || placeOf(row - 1) == fresh.size()))
            --row;
        remove(parent, row, last);
        end -= last + 1 - row;
    }
    // Bring the others into the new order.
    std::vector<std::size_t> order;
    for (std::size_t row = begin; row < end; ++row)
        order.push_back(placeOf(row));
    if (!std::is_sorted(order.cbegin(), order.cend())) {
        Q_EMIT q->layoutAboutToBeChanged({indexOf(&parent)});
        const QModelIndexList before = q->persistentIndexList();
        std::sort(children.begin() + std::ptrdiff_t(begin), children.begin() + std::ptrdiff_t(end),
                  [&](const auto& a, const auto& b) {
                      return places.value(sameKey(*a)) < places.value(sameKey(*b));
                  });
        renumber(*parent.branch, &parent, begin);
        QModelIndexList after;
        for (const QModelIndex& index : before)
            after.append(indexOf(nodeAt(index), index.column()));
        q->changePersistentIndexList(before, after);
        Q_EMIT q->layoutChanged({indexOf(&parent)});
        std::sort(order.begin(), order.end());
    }
    // Put in what is new, in runs again.
    order.push_back(fresh.size());
    const std::size_t gaps = order.size();
    std::size_t next = 0; // of fresh
    std::size_t row = begin;
    for (std::size_t i = 0; i < gaps; ++i) {
        Nodes run(std::make_move_iterator(fresh.begin() + std::ptrdiff_t(next)),
                  std::make_move_iterator(fresh.begin() + std::ptrdiff_t(order[i])));
        const std::size_t size = run.size();
        insert(parent, row, std::move(run));
        row += size;
        if (i + 1 == gaps)
            return;
        fresh[order[i]]->flags |= children[row]->flags & CompactNode::Failed;
        if (children[row]->update(*fresh[order[i]]))
            Q_EMIT q->dataChanged(indexOf(children[row].get()),
                                  indexOf(children[row].get(), ColumnCount - 1));
        next = order[i] + 1;
        ++row;
    }
}

void QvelAddressSpaceModel::refresh(const QModelIndex& index)
{
    if (!d->table.isConnected() || !d->root)
        return;
    Node* top = index.isValid() ? d->nodeAt(index) : d->root.get();
    if (top->isMessage())
        top = top->parent;
    if (top == d->root.get())
        d->readRoot();
    d->walk(top, [this](Node& node) {
        if (node.branch)
            d->fetch(node);
        return true;
    });
}

void QvelAddressSpaceModel::locate(const UaExpandedNodeId& id)
{
    d->descent.reset();
    d->ascent.reset();
    const QByteArray key = d->table.key(id);
    const Node* known = nullptr;
    d->walk(d->root.get(), [&](const Node& node) {
        if (!node.isMessage() && node.key() == key)
            known = &node;
        return !known;
    });
    if (known) {
        Q_EMIT located(d->indexOf(known));
    } else if (!d->failUnconnected()) {
        d->ascent = std::make_shared<Ascent>();
        d->ascent->target = key;
        d->ascent->frontier = {key};
        d->ascend();
    }
}

void QvelAddressSpaceModel::Private::ascend()
{
    QList<QvelBrowseItem> items;
    for (const QByteArray& key : std::as_const(ascent->frontier)) {
        QvelBrowseItem item;
        item.nodeId = table.nodeId(key);
        item.direction = QvelBrowseDirection::Inverse;
        items.append(item);
    }
    const auto take = [this, guard = std::weak_ptr(ascent)](const QvelBrowseResult& result) {
        if (!guard.expired())
            climb(result);
    };
    whenDone(table.session()->browse(items), this, take);
}

void QvelAddressSpaceModel::Private::climb(const QvelBrowseResult& result)
{
    UaStatusCode status = result.status;
    if (!status.isBad() && ascent->below.isEmpty() && !result.results.isEmpty())
        status = result.results[0].status;
    if (status.isBad())
        return fail(statusInWords(status));
    const QByteArray top = root->key().toByteArray();
    QList<QByteArray> next;
    for (qsizetype i = 0; i < result.results.size(); ++i) {
        for (const QvelReference& reference : result.results[i].references) {
            const QByteArray parent = table.key(reference.nodeId);
            if (parent == ascent->target || ascent->below.contains(parent))
                continue;
            ascent->below.insert(parent, ascent->frontier[i]);
            next.append(parent);
        }
    }
    if (ascent->below.contains(top)) {
        Descent way;
        for (QByteArray key = top; !key.isEmpty(); key = ascent->below.value(key))
            way.keys.append(key);
        descent = way;
        ascent.reset();
        return descend();
    }
    if (next.isEmpty() || ascent->below.size() > mostAncestors)
        return fail(QvelAddressSpaceModel::tr("No hierarchical reference leads from %1 to %2.")
                        .arg(root->shownName(), shownText(table.idText(ascent->target))));
    ascent->frontier = next;
    ascend();
}

void QvelAddressSpaceModel::locatePath(const QList<UaExpandedNodeId>& path)
{
    d->ascent.reset();
    d->descent.emplace();
    for (const UaExpandedNodeId& id : path)
        d->descent->keys.append(d->table.key(id));
    d->descend();
}

void QvelAddressSpaceModel::Private::descend()
{
    if (!descent)
        return;
    Node* node = root.get();
    const QList<QByteArray>& keys = descent->keys;
    if (!node || keys.isEmpty() || node->key() != keys[0])
        return fail(QvelAddressSpaceModel::tr("The tree begins at another node."));
    for (qsizetype depth = 1; depth < keys.size(); ++depth) {
        Branch* branch = node->branch.get();
        const auto isNext = [&](const auto& child) {
            return !child->isMessage() && child->key() == keys[depth];
        };
        if (branch) {
            const auto found =
                std::find_if(branch->children.cbegin(), branch->children.cend(), isNext);
            if (found != branch->children.cend()) {
                node = found->get();
                continue;
            }
            if (branch->fetch)
                return; // until more has come
        }
        if (descent->askedDepth < depth) {
            descent->askedDepth = depth;
            if (!failUnconnected())
                fetch(*node);
            return;
        }
        if (branch && branch->nodeCount() < qsizetype(branch->children.size()))
            return fail(branch->children.back()->shownName());
        return fail(QvelAddressSpaceModel::tr("There is no %1 below %2.")
                        .arg(shownText(table.idText(keys[depth])), node->shownName()));
    }
    descent.reset();
    Q_EMIT q->located(indexOf(node));
}

void QvelAddressSpaceModel::locateText(const QString& text)
{
    d->descent.reset();
    d->ascent.reset();
    const QString trimmed = text.trimmed();
    if (const auto id = qvelParseNodeId(trimmed))
        return locate(*id);
    const bool isPath = trimmed.startsWith(u'/') || trimmed.startsWith(u'.');
    const auto elements = isPath ? parseBrowsePath(trimmed == u"/" ? QString() : trimmed)
                                 : std::optional<QList<QvelPathElement>>();
    if (!elements)
        return d->fail(tr("%1 is no NodeId and no browse path; one looks like i=85, "
                          "nsu=urn:plant;s=Pump or /Objects/2:Plant.")
                           .arg(shownText(trimmed)));
    if (d->failUnconnected())
        return;
    const UaNodeId start = d->table.nodeId(d->table.key(d->rootId));
    if (elements->isEmpty())
        return locate(d->rootId);
    d->ascent = std::make_shared<Ascent>();
    const auto take = [this, guard = std::weak_ptr(d->ascent)](const QvelTranslateResult& result) {
        if (guard.expired())
            return;
        UaStatusCode status = result.status;
        const QvelTranslatedPath path = result.results.value(0);
        if (!status.isBad())
            status = path.status;
        const bool isWhole =
            !path.targets.isEmpty() && path.targets[0].remainingPathIndex == 0xffffffff;
        if (status.isBad() || !isWhole)
            return d->fail(
                statusInWords(status.isBad() ? status : UaStatusCode(OpcUa_BadNotSupported)));
        locate(d->table.id(d->table.key(path.targets[0].nodeId)));
    };
    whenDone(session()->translateBrowsePaths({{start, *elements}}), d.get(), take);
}

UaExpandedNodeId QvelAddressSpaceModel::nodeId(const QModelIndex& index) const
{
    return index.isValid() ? d->table.id(d->nodeAt(index)->key()) : UaExpandedNodeId();
}

QvelNodeLink QvelAddressSpaceModel::nodeLink(const QModelIndex& index) const
{
    return index.isValid() ? QvelNodeLink{nodeId(index), d->nodeAt(index)->displayName()}
                           : QvelNodeLink();
}

OpcUa_UInt32 QvelAddressSpaceModel::nodeClass(const QModelIndex& index) const
{
    return index.isValid() ? d->nodeAt(index)->nodeClass : 0;
}

QString QvelAddressSpaceModel::nodeIdText(const QModelIndex& index) const
{
    return index.isValid() && !d->nodeAt(index)->isMessage()
               ? d->table.idText(d->nodeAt(index)->key())
               : QString();
}

QString QvelAddressSpaceModel::browsePath(const QModelIndex& index) const
{
    QString path;
    for (const Node* node = index.isValid() ? d->nodeAt(index) : nullptr;
         node && !node->isMessage() && node->parent; node = node->parent)
        path.prepend(u'/' + d->table.nameText(node->browseSpace, escaped(node->browseName())));
    return path.isEmpty() && index.isValid() ? QStringLiteral("/") : path;
}

QList<UaExpandedNodeId> QvelAddressSpaceModel::path(const QModelIndex& index) const
{
    QList<UaExpandedNodeId> path;
    for (const Node* node = index.isValid() ? d->nodeAt(index) : nullptr; node; node = node->parent)
        path.prepend(d->table.id(node->key()));
    return path;
}

QModelIndex QvelAddressSpaceModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || row >= rowCount(parent) || column < 0 || column >= ColumnCount)
        return {};
    if (!parent.isValid())
        return d->indexOf(d->root.get(), column);
    return d->indexOf(d->nodeAt(parent)->branch->children[std::size_t(row)].get(), column);
}

QModelIndex QvelAddressSpaceModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? d->indexOf(d->nodeAt(index)->parent) : QModelIndex();
}

int QvelAddressSpaceModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return d->root ? 1 : 0;
    const Node* node = d->nodeAt(parent);
    return parent.column() == 0 && node->branch ? int(node->branch->children.size()) : 0;
}

int QvelAddressSpaceModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

bool QvelAddressSpaceModel::hasChildren(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return d->root != nullptr;
    const Node* node = d->nodeAt(parent);
    if (parent.column() != 0 || node->isMessage())
        return false;
    return !node->branch || node->branch->fetch || !node->branch->children.empty();
}

bool QvelAddressSpaceModel::canFetchMore(const QModelIndex& parent) const
{
    const Node* node = parent.isValid() ? d->nodeAt(parent) : nullptr;
    return node && parent.column() == 0 && !node->isMessage() && !node->branch &&
           d->table.isConnected();
}

void QvelAddressSpaceModel::fetchMore(const QModelIndex& parent)
{
    if (canFetchMore(parent))
        d->fetch(*d->nodeAt(parent));
}

Qt::ItemFlags QvelAddressSpaceModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return flags |
           (d->nodeAt(index)->isMessage() ? Qt::ItemNeverHasChildren : Qt::ItemIsDragEnabled);
}

QVariant QvelAddressSpaceModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Node& node = *d->nodeAt(index);
    const auto name = [&] {
        const QString shown = node.shownName();
        return shown.isEmpty() ? shownText(d->table.idText(node.key())) : shown;
    };
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == DisplayName)
            return name();
        if (node.isMessage())
            return {};
        if (index.column() == BrowseName)
            return leftToRight(d->table.nameText(node.browseSpace, node.shownBrowseName()));
        if (index.column() == NodeId)
            return leftToRight(shownText(nodeIdText(index)));
        return index.column() == NodeClass ? nodeClassName(node.nodeClass)
                                           : d->table.typeName(node.typeDefinition);
    case Qt::DecorationRole:
        return index.column() == 0 ? QVariant(d->table.icon(node)) : QVariant();
    case Qt::ForegroundRole:
        return staleForeground(d->isStale);
    case Qt::ToolTipRole: {
        QStringList lines = {name()};
        if (!node.isMessage())
            lines.append(shownText(qvelNodeIdText(nodeId(index))));
        if (!node.isMessage() && (node.flags & CompactNode::Failed) != 0)
            lines.append(statusInWords(OpcUa_BadNodeIdUnknown));
        if (d->isStale)
            lines.append(staleSentence());
        return plainToolTip(lines.join(u'\n'));
    }
    case Qt::AccessibleTextRole:
        return index.column() == 0 && node.nodeClass != 0
                   ? QStringLiteral("%1, %2").arg(name(), nodeClassName(node.nodeClass))
                   : QVariant();
    case NodeIdRole:
        return QVariant::fromValue(nodeId(index));
    case NodeClassRole:
        return node.nodeClass;
    case FailureRole:
        return (node.flags & CompactNode::Failed) != 0;
    default:
        return {};
    }
}

QVariant QvelAddressSpaceModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= ColumnCount)
        return {};
    const QString titles[] = {tr("Name"), tr("Browse Name"), tr("NodeId"), tr("Class"), tr("Type")};
    return titles[section];
}

QStringList QvelAddressSpaceModel::mimeTypes() const
{
    return std::unique_ptr<QMimeData>(qvelNodeMimeData({}))->formats();
}

QMimeData* QvelAddressSpaceModel::mimeData(const QModelIndexList& indexes) const
{
    QList<QvelNodeLink> links;
    for (const QModelIndex& index : indexes)
        if (index.column() == 0 && !d->nodeAt(index)->isMessage())
            links.append(nodeLink(index));
    return links.isEmpty() ? nullptr : qvelNodeMimeData(links);
}

#include "discoveryhint.h"

#include "language.h"
#include "plainline.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNodeDiscovery>
#include <Kestrel/QvelDiscoveryNodeServer>
#include <Kestrel/QvelDiscoveryWidget>

#include <QtCore/QUrl>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>

namespace {

constexpr int maxText = 400; // characters of a failure
constexpr int networkRow = 1;

QvelDiscoveryModel* modelOf(const QvelDiscoveryWidget& tree)
{
    return qobject_cast<QvelDiscoveryModel*>(tree.model());
}

QvelDiscoveryNode* nodeOf(const QModelIndex& index)
{
    return static_cast<QvelDiscoveryNode*>(index.internalPointer());
}

QString urlOf(QvelDiscoveryNode* node)
{
    if (node->type() == QvelDiscoveryNode::TypeServer)
        return static_cast<QvelDiscoveryNodeServer*>(node)->serverDiscoveryUrl();
    if (node->type() == QvelDiscoveryNode::TypeDiscovery)
        return static_cast<QvelDiscoveryNodeDiscovery*>(node)->discoveryUrl();
    return {};
}

// What there is to do with an entry that was asked, or need not be.
QString nextStep(QvelDiscoveryNode* node, bool isOpen)
{
    const bool isEmpty = node->isBrowsed() && !node->hasChildren();
    switch (node->type()) {
    case QvelDiscoveryNode::TypeEndpoint:
        return DiscoveryHint::tr("Double-click the endpoint, or press Connect, to open a session. "
                                 "The page Connection changes user and security before that.");
    case QvelDiscoveryNode::TypeServer:
        return isEmpty  ? DiscoveryHint::tr("The server offers no endpoint of opc.tcp.")
               : isOpen ? DiscoveryHint::tr("Choose one of the endpoints below: each is a way to "
                                            "connect, with its own security.")
                        : DiscoveryHint::tr("Open the server to see its endpoints: each is a way "
                                            "to connect, with its own security.");
    case QvelDiscoveryNode::TypeDiscovery:
        return isEmpty  ? DiscoveryHint::tr("No server was found there.")
               : isOpen ? DiscoveryHint::tr("Open one of the servers below to see its endpoints.")
                        : DiscoveryHint::tr("Open the entry to see which servers are there.");
    case QvelDiscoveryNode::TypeNetwork:
        return isEmpty ? DiscoveryHint::tr("No server announces itself on the network. Many never "
                                           "do: give their URL under \"Custom Discovery\".")
                       : DiscoveryHint::tr("Computers that announce OPC UA servers.");
    case QvelDiscoveryNode::TypeGeneric:
        break;
    }
    const QvelDiscoveryModel& model = *node->model();
    if (node == model.getAddServerNode())
        return DiscoveryHint::tr("Double-click the entry, or press Enter on it, to give the URL of "
                                 "a server, such as opc.tcp://plc17:4840.");
    if (node == const_cast<QvelDiscoveryModel&>(model).getRecentNode())
        return isEmpty ? DiscoveryHint::tr("Endpoints that you have used will be listed here.")
                       : DiscoveryHint::tr("Double-click an endpoint to connect as last time.");
    return DiscoveryHint::tr("URLs that you have added. Open one to see which servers are there.");
}

QString textOf(QvelDiscoveryNode* node, bool isOpen)
{
    if (node->isBrowsing())
        return DiscoveryHint::tr("Looking...");
    return node->lastFailure().isEmpty() ? nextStep(node, isOpen)
                                         : plainLine(node->lastFailure(), maxText);
}

/// Takes the width that it is given: to look for a good one means to wrap the text again and again.
/// A text that is to be selected is a whole document, so it becomes one under the mouse only.
class WrappedText : public QLabel
{
public:
    QSize minimumSizeHint() const override { return {0, 3 * fontMetrics().lineSpacing()}; }
    QSize sizeHint() const override { return minimumSizeHint(); }

protected:
    void enterEvent(QEnterEvent* event) override
    {
        setTextInteractionFlags(Qt::TextSelectableByMouse);
        QLabel::enterEvent(event);
    }
};

} // namespace

QStringList otherUrls(const QvelDiscoveryWidget& tree, const QString& text)
{
    QStringList urls;
    const QUrl url(text);
    for (QModelIndex at = tree.currentIndex(); at.isValid(); at = at.parent()) {
        const QUrl answered(urlOf(nodeOf(at)));
        QUrl other = url;
        other.setHost(answered.host());
        const QString found = other.toString();
        if (!answered.host().isEmpty() && answered.host() != url.host() && !urls.contains(found))
            urls.append(found);
    }
    return urls;
}

DiscoveryHint::DiscoveryHint(QWidget* parent)
    : QWidget(parent), m_text(new WrappedText), m_look(new QPushButton)
{
    m_text->setObjectName(QStringLiteral("hint"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setMinimumHeight(m_text->minimumSizeHint().height()); // what is below does not jump
    m_text->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    m_look->setObjectName(QStringLiteral("lookThere"));
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_look, 0, Qt::AlignTop);
    connect(m_look, &QPushButton::clicked, this, [this] {
        if (m_tree)
            modelOf(*m_tree)->addRemoteServer(m_url);
        m_look->hide();
    });
    Language::follow(this, [this] { refresh(); });
}

void DiscoveryHint::setTree(QvelDiscoveryWidget* tree)
{
    if (m_tree) {
        m_tree->disconnect(this);
        m_tree->selectionModel()->disconnect(this);
        m_tree->model()->disconnect(this);
    }
    m_tree = tree;
    if (tree) {
        connect(tree, &QTreeView::expanded, this, &DiscoveryHint::refresh);
        connect(tree, &QTreeView::collapsed, this, &DiscoveryHint::refresh);
        connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
                &DiscoveryHint::refresh);
        // Later, when the model is done with what it announces.
        connect(tree->model(), &QAbstractItemModel::dataChanged, this, &DiscoveryHint::refresh,
                Qt::QueuedConnection);
    }
    refresh();
}

void DiscoveryHint::refresh()
{
    const QModelIndex current = m_tree ? m_tree->currentIndex() : QModelIndex();
    QvelDiscoveryNode* node = current.isValid() ? nodeOf(current) : nullptr;
    QString text = node
                       ? textOf(node, m_tree->isExpanded(current))
                       : tr("Choose a server on the left: \"Local\" lists those of this computer; "
                            "for any other, double-click \"< Double click to Add Server... >\" and "
                            "give its URL. Then double-click one of its endpoints to connect.");
    QString failure = node ? node->lastFailure() : QString();
    if (!node && m_tree) {
        const QModelIndex network = m_tree->model()->index(networkRow, 0);
        failure = network.isValid() ? nodeOf(network)->lastFailure() : QString();
        if (!failure.isEmpty())
            text += QLatin1Char('\n') + failure;
    }
    m_text->setText(text);
    m_url.clear();
    if (node && !failure.isEmpty())
        m_url = otherUrls(*m_tree, urlOf(node)).value(0);
    m_look->setVisible(!m_url.isEmpty());
    m_look->setText(tr("Look Under %1").arg(plainLine(m_url, 60)));
}

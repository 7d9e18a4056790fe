#include "attributeswidget.h"

#include "base/retranslate_p.h"
#include "base/viewhint_p.h"
#include "nodes/attributesmodel.h"
#include "nodes/nodelink.h"
#include "nodes/statustext_p.h"
#include "nodes/valuedelegate_p.h"
#include "session/session.h"

#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

static void tellWhyEmpty(QAbstractItemView* view, const QvelAttributesModel* model)
{
    setViewHint(view, model->node() == UaExpandedNodeId()
                          ? QvelAttributesWidget::tr("Select a node to see its attributes.")
                          : waitingSentence(model->session()));
}

QvelAttributesWidget::QvelAttributesWidget(QWidget* parent)
    : QWidget(parent), m_model(new QvelAttributesModel(this)),
      m_view(new ValueList(QvelAttributesModel::ValueColumn))
{
    constexpr int valueWidth = 40; // average characters
    constexpr int statusWidth = 14;
    m_view->setModel(m_model);
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    int names = 0;
    for (OpcUa_UInt32 id = QvelAttribute::NodeId; id <= QvelAttribute::AccessLevelEx; ++id)
        names = std::max(
            names, fontMetrics().horizontalAdvance(QString::fromLatin1(QvelAttribute::name(id))));
    const int average = fontMetrics().averageCharWidth();
    int column = 0;
    for (int width : {names + 2 * average, valueWidth * average, statusWidth * average})
        m_view->header()->resizeSection(column++, width);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    setFocusProxy(m_view);

    const auto add = [this](const QKeySequence& key, auto slot) {
        auto* action = new QAction(m_view);
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        m_view->addAction(action);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };
    QAction* edit = add(QKeySequence(), [this] { m_view->edit(m_view->currentIndex()); });
    QAction* copyValue = add(QKeySequence::Copy, [this] { copy(); });
    QAction* refresh = add(QKeySequence::Refresh, [this] { m_model->refresh(); });
    retranslated(this, [=] {
        m_view->setAccessibleName(tr("Attributes"));
        tellWhyEmpty(m_view, m_model);
        edit->setText(tr("&Edit Value"));
        copyValue->setText(tr("&Copy Value"));
        refresh->setText(tr("&Refresh"));
    });
}

QvelAttributesWidget::~QvelAttributesWidget() = default;

void QvelAttributesWidget::setSession(QvelSession* session)
{
    if (QvelSession* before = m_model->session())
        before->disconnect(this);
    m_model->setSession(session);
    if (session)
        connect(session, &QvelSession::stateChanged, this,
                [this] { tellWhyEmpty(m_view, m_model); });
    tellWhyEmpty(m_view, m_model);
}

QvelSession* QvelAttributesWidget::session() const
{
    return m_model->session();
}

QString QvelAttributesWidget::nodeId() const
{
    return qvelNodeIdText(node());
}

void QvelAttributesWidget::setNodeId(const QString& text)
{
    setNode(qvelParseNodeId(text).value_or(UaExpandedNodeId()));
}

void QvelAttributesWidget::setNode(const UaExpandedNodeId& node)
{
    m_model->setNode(node);
    tellWhyEmpty(m_view, m_model);
}

UaExpandedNodeId QvelAttributesWidget::node() const
{
    return m_model->node();
}

QTreeView* QvelAttributesWidget::view() const
{
    return m_view;
}

void QvelAttributesWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_model->setLive(true);
}

void QvelAttributesWidget::hideEvent(QHideEvent* event)
{
    m_model->setLive(false);
    QWidget::hideEvent(event);
}

void QvelAttributesWidget::copy()
{
    const QModelIndex current = m_view->currentIndex();
    if (current.isValid())
        QGuiApplication::clipboard()->setText(
            current.data(QvelAttributesModel::CopyRole).toString());
}

#include "toolboxpages.h"

#include <Kestrel/QvelToolBox>

#include <QtCore/QEvent>
#include <QtDesigner/QDesignerFormEditorInterface>
#include <QtDesigner/QDesignerFormWindowInterface>
#include <QtDesigner/QDesignerFormWindowManagerInterface>
#include <QtDesigner/QDesignerPropertySheetExtension>
#include <QtDesigner/QExtensionManager>
#include <QtGui/QAction>
#include <QtGui/QUndoCommand>
#include <QtWidgets/QApplication>
#include <QtWidgets/QToolButton>

#include <utility>

namespace {

QStringList titlesOf(const QvelToolBox* box)
{
    const QString titles = box->getItemTexts();
    return titles.isEmpty() ? QStringList() : titles.split(u'|');
}

class MovePage : public QUndoCommand
{
public:
    MovePage(ToolBoxPages* pages, int from, int to)
        : QUndoCommand(ToolBoxMenu::tr("Move Page")), m_pages(pages), m_from(from), m_to(to)
    {
    }
    void redo() override { move(m_from, m_to); }
    void undo() override { move(m_to, m_from); }

private:
    void move(int from, int to)
    {
        QWidget* page = m_pages->widget(from);
        m_pages->remove(from);
        m_pages->insertWidget(to, page);
        m_pages->setCurrentIndex(to);
    }

    ToolBoxPages* const m_pages;
    const int m_from;
    const int m_to;
};

} // namespace

ToolBoxPages::ToolBoxPages(QvelToolBox* box, QDesignerFormEditorInterface* core, QObject* parent)
    : QObject(parent), m_box(box), m_core(core)
{
    // Before Designer's own filter, which takes clicks for itself.
    qApp->installEventFilter(this);
    connect(box, &QvelToolBox::itemTextsChanged, this, &ToolBoxPages::storeTitles);
}

int ToolBoxPages::count() const
{
    return m_box->count();
}

QWidget* ToolBoxPages::widget(int index) const
{
    return m_box->widget(index);
}

int ToolBoxPages::currentIndex() const
{
    return qMin(m_box->getCurrentIndex(), count() - 1); // -1 without pages
}

void ToolBoxPages::setCurrentIndex(int index)
{
    m_box->setCurrentIndex(index);
}

void ToolBoxPages::addWidget(QWidget* page)
{
    insertWidget(count(), page);
}

void ToolBoxPages::insertWidget(int index, QWidget* page)
{
    QStringList titles = titlesOf(m_box);
    const bool isLoading = titles.size() > count(); // titles are there before the pages
    m_box->insertPage(index, page);
    // Designer lets a click through to what is called so: pages open and close on the form.
    for (auto* button : page->parentWidget()->findChildren<QToolButton*>("toggleButton"))
        button->setObjectName("__qt__passive_toggleButton");
    if (isLoading)
        return;
    const QString invented = QvelToolBox::tr("Page_%1").arg(count());
    titles.insert(qBound(0, index, int(titles.size())), m_titles.take(page));
    if (titles.at(index).isEmpty())
        titles[index] = invented;
    m_box->setItemTexts(titles.join(u'|'));
}

void ToolBoxPages::remove(int index)
{
    const QWidget* page = widget(index);
    if (!page)
        return;
    m_titles.insert(page, titlesOf(m_box).value(index));
    connect(page, &QObject::destroyed, this, [this](QObject* gone) { m_titles.remove(gone); });
    m_box->removePage(index);
    setCurrentIndex(qMax(0, currentIndex()));
}

// What the form's file says of the titles follows the pages.
void ToolBoxPages::storeTitles()
{
    auto* sheet = qt_extension<QDesignerPropertySheetExtension*>(m_core->extensionManager(), m_box);
    const int index = sheet ? sheet->indexOf("itemTexts") : -1;
    const QString titles = m_box->getItemTexts();
    if (index < 0 || titles == std::exchange(m_stored, titles))
        return;
    sheet->setProperty(index, titles);
    sheet->setChanged(index, true);
}

bool ToolBoxPages::eventFilter(QObject* watched, QEvent* event)
{
    auto* pressed = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::MouseButtonPress && pressed && m_box->isAncestorOf(pressed)) {
        for (int i = 0; i < count(); ++i) {
            if (widget(i) && widget(i)->parentWidget()->isAncestorOf(pressed))
                setCurrentIndex(i);
        }
    }
    return false;
}

ToolBoxMenu::ToolBoxMenu(QvelToolBox* box, QDesignerFormEditorInterface* core, QObject* parent)
    : QObject(parent), m_box(box), m_core(core), m_up(new QAction(tr("Move Page Up"), this)),
      m_down(new QAction(tr("Move Page Down"), this))
{
    connect(m_up, &QAction::triggered, this, [this] { move(-1); });
    connect(m_down, &QAction::triggered, this, [this] { move(1); });
}

QList<QAction*> ToolBoxMenu::taskActions() const
{
    const int index = m_box->getCurrentIndex();
    m_up->setEnabled(index > 0 && index < m_box->count());
    m_down->setEnabled(index >= 0 && index < m_box->count() - 1);
    return {m_up, m_down};
}

void ToolBoxMenu::move(int step)
{
    auto* container = qt_extension<QDesignerContainerExtension*>(m_core->extensionManager(), m_box);
    QDesignerFormWindowInterface* form = m_core->formWindowManager()->activeFormWindow();
    if (!container || !form)
        return;
    const int from = container->currentIndex();
    form->commandHistory()->push(
        new MovePage(static_cast<ToolBoxPages*>(container), from, from + step));
}

ToolBoxExtensions::ToolBoxExtensions(QDesignerFormEditorInterface* core)
    : QExtensionFactory(core->extensionManager()), m_core(core)
{
    for (const auto& iid :
         {Q_TYPEID(QDesignerContainerExtension), Q_TYPEID(QDesignerTaskMenuExtension)})
        core->extensionManager()->registerExtensions(this, iid);
}

QObject* ToolBoxExtensions::createExtension(QObject* object, const QString& iid,
                                            QObject* parent) const
{
    auto* box = qobject_cast<QvelToolBox*>(object);
    if (!box)
        return nullptr;
    if (iid == Q_TYPEID(QDesignerContainerExtension))
        return new ToolBoxPages(box, m_core, parent);
    if (iid == Q_TYPEID(QDesignerTaskMenuExtension))
        return new ToolBoxMenu(box, m_core, parent);
    return nullptr;
}

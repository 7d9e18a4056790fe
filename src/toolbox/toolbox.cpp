#include "toolbox.h"

#include "base/retranslate_p.h"
#include "toolbox/toolboxpage_p.h"

#include <QtCore/QPointer>
#include <QtCore/QVector>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

class QvelToolBox::Private
{
public:
    bool hasPage(int index) const { return index >= 0 && index < pages.size(); }
    bool hasText(int index) const { return index >= 0 && index < itemTexts.size(); }
    /// Lets the Tab key visit the pages from top to bottom.
    void orderFocus() const;

    QVBoxLayout* layout;
    QVector<QvelToolBoxPage*> pages;
    int currentIndex = 0;
    QStringList itemTexts;
};

void QvelToolBox::Private::orderFocus() const
{
    QWidgetList widgets;
    for (QvelToolBoxPage* page : pages) {
        // The chain is a ring through the whole window; a page's widgets may lie anywhere in it.
        for (QWidget* w = page->nextInFocusChain(); w != page; w = w->nextInFocusChain()) {
            if (w->focusPolicy() != Qt::NoFocus && page->isAncestorOf(w))
                widgets.append(w);
        }
    }
    for (int i = 1; i < widgets.size(); ++i)
        QWidget::setTabOrder(widgets.at(i - 1), widgets.at(i));
}

QvelToolBox::QvelToolBox(QWidget* parent) : QWidget(parent), d(new Private)
{
    d->layout = new QVBoxLayout(this);
    d->layout->setContentsMargins(0, 0, 0, 0);
    d->layout->setSpacing(6);
    retranslated(this, [this] {
        const QStringList before = d->itemTexts;
        for (int i = 0; i < count(); ++i) {
            QvelToolBoxPage* page = d->pages.at(i);
            const QString title = page->title();
            if (page->inventedNumber() == 0)
                continue;
            page->inventTitle(page->inventedNumber());
            if (d->itemTexts.value(i) == title)
                d->itemTexts.replace(i, page->title());
        }
        if (d->itemTexts != before)
            Q_EMIT itemTextsChanged(d->itemTexts);
    });
}

QvelToolBox::~QvelToolBox() = default;

int QvelToolBox::count() const
{
    return int(d->pages.size());
}

QWidget* QvelToolBox::widget(int index)
{
    return d->hasPage(index) ? d->pages.at(index)->content() : nullptr;
}

int QvelToolBox::getCurrentIndex() const
{
    return d->currentIndex;
}

QString QvelToolBox::getCurrentItemText() const
{
    return d->itemTexts.value(d->currentIndex);
}

QString QvelToolBox::getItemTexts() const
{
    return d->itemTexts.join(QLatin1Char('|'));
}

QSize QvelToolBox::sizeHint() const
{
    return {200, 200};
}

void QvelToolBox::setCurrentItemText(QString sText)
{
    if (d->hasPage(d->currentIndex)) {
        d->pages.at(d->currentIndex)->setTitle(sText);
        if (d->hasText(d->currentIndex)) // pages may outnumber the titles
            d->itemTexts.replace(d->currentIndex, sText);
    }
    const QPointer<QvelToolBox> self(this);
    Q_EMIT currentItemTextChanged(sText);
    if (self)
        Q_EMIT itemTextsChanged(d->itemTexts);
}

void QvelToolBox::setItemTexts(QString sTexts)
{
    d->itemTexts = sTexts.split(QLatin1Char('|'));
    for (int i = 0; i < count(); ++i) {
        if (d->hasText(i))
            d->pages.at(i)->setTitle(d->itemTexts.at(i));
        else
            d->pages.at(i)->inventTitle(i + 1);
    }
    Q_EMIT itemTextsChanged(d->itemTexts);
}

void QvelToolBox::addPage(QWidget* page)
{
    insertPage(count(), page);
}

void QvelToolBox::insertPage(int index, QWidget* page)
{
    const auto holds = [page](const QvelToolBoxPage* each) { return each->content() == page; };
    if (!page || std::any_of(d->pages.cbegin(), d->pages.cend(), holds)) {
        qWarning("QvelToolBox::insertPage: the page is null or held already");
        return;
    }
    if (index < 0 || index > count())
        index = count();

    auto* toolBoxPage = new QvelToolBoxPage(page, this);
    d->layout->insertWidget(index, toolBoxPage);
    toolBoxPage->show();
    if (d->hasText(index)) {
        toolBoxPage->setTitle(d->itemTexts.at(index));
    } else {
        toolBoxPage->inventTitle(count() + 1);
        d->itemTexts.append(toolBoxPage->title());
        const QPointer<QvelToolBox> self(this);
        Q_EMIT itemTextsChanged(d->itemTexts);
        if (!self)
            return;
        index = qMin(d->layout->indexOf(toolBoxPage), count()); // pages may have gone
    }
    d->pages.insert(index, toolBoxPage);
    if (index < count() - 1)
        d->orderFocus();
    setCurrentIndex(index);
    connect(toolBoxPage, &QvelToolBoxPage::visibilityChanged, this,
            &QvelToolBox::pageVisibilityChanged);
}

void QvelToolBox::removePage(int index)
{
    if (!d->hasPage(index))
        return;
    QvelToolBoxPage* page = d->pages.takeAt(index);
    d->layout->removeWidget(page);
    page->releaseContent();
    page->dispose();
    if (d->hasText(index))
        d->itemTexts.removeAt(index);
    Q_EMIT itemTextsChanged(d->itemTexts);
}

void QvelToolBox::setCurrentIndex(int index)
{
    if (d->currentIndex == index)
        return;
    d->currentIndex = index;
    Q_EMIT currentIndexChanged(index);
}

void QvelToolBox::pageVisibilityChanged(bool)
{
    const bool anyVisible =
        std::any_of(d->pages.cbegin(), d->pages.cend(), [](const QvelToolBoxPage* page) {
            return page->content() && page->content()->isVisible();
        });
    const int items = d->layout->count();
    if (anyVisible && items > count())
        delete d->layout->takeAt(items - 1);
    else if (!anyVisible && items == count())
        d->layout->addStretch(0);
}

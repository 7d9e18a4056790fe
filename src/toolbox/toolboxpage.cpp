#include "toolboxpage_p.h"

#include "base/retranslate_p.h"
#include "images/images_p.h"
#include "toolbox/toolbox.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

static QPalette headerPalette()
{
    const QColor grey(128, 128, 128);
    QPalette palette;
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        palette.setBrush(group, QPalette::WindowText, Qt::white);
        palette.setBrush(group, QPalette::Base, Qt::white);
        palette.setBrush(group, QPalette::Window, grey);
    }
    palette.setBrush(QPalette::Disabled, QPalette::WindowText, QColor(106, 104, 100));
    palette.setBrush(QPalette::Disabled, QPalette::Base, grey);
    palette.setBrush(QPalette::Disabled, QPalette::Window, grey);
    return palette;
}

QvelToolBoxPage::QvelToolBoxPage(QWidget* content, QWidget* parent)
    : QWidget(parent), m_content(content), m_headerLabel(new QLabel),
      m_toggleButton(new QToolButton), m_headerLayout(new QHBoxLayout),
      m_pageLayout(new QVBoxLayout(this))
{
    setContentsMargins(0, 0, 0, 0);

    m_headerLabel->setAutoFillBackground(true);
    m_headerLabel->setMargin(2);
    m_headerLabel->setIndent(5);
    m_headerLabel->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    m_headerLabel->setPalette(headerPalette());
    // A mnemonic in the title opens and closes the page; the title names the button, too.
    m_headerLabel->setBuddy(m_toggleButton);

    m_toggleButton->setObjectName(QStringLiteral("toggleButton"));
    m_toggleButton->setCheckable(true);
    m_toggleButton->setChecked(true);
    m_toggleButton->setAutoRaise(true);
    m_toggleButton->setIcon(paletteIcon(QStringLiteral(":/kestrel/images/showGroup.png"),
                                        QStringLiteral(":/kestrel/images/hideGroup.png")));
    retranslated(this, [this] { m_toggleButton->setToolTip(tr("Show or hide this page")); });

    m_headerLayout->setContentsMargins(0, 0, 0, 0);
    m_headerLayout->addWidget(m_headerLabel);
    m_headerLayout->addWidget(m_toggleButton);
    m_pageLayout->setContentsMargins(0, 0, 0, 0);
    m_pageLayout->addLayout(m_headerLayout);
    m_pageLayout->addWidget(content);
    content->show(); // it may come from a page that was closed
    connect(m_toggleButton, &QAbstractButton::toggled, this, &QvelToolBoxPage::toggleVisibility);
}

void QvelToolBoxPage::setTitle(const QString& title)
{
    m_headerLabel->setText(title);
    m_inventedNumber = 0;
}

QString QvelToolBoxPage::title() const
{
    return m_headerLabel->text();
}

void QvelToolBoxPage::inventTitle(int number)
{
    setTitle(QvelToolBox::tr("Page_%1").arg(number));
    m_inventedNumber = number;
}

void QvelToolBoxPage::releaseContent()
{
    if (!m_content)
        return;
    m_pageLayout->removeWidget(m_content);
    m_content->setParent(nullptr);
}

void QvelToolBoxPage::dispose()
{
    if (!m_toggling) {
        delete this;
        return;
    }
    hide();
    deleteLater();
}

void QvelToolBoxPage::toggleVisibility(bool bVisible)
{
    m_toggling = true; // the content may have the page removed
    const QPointer<QvelToolBoxPage> self(this);
    if (m_content)
        m_content->setVisible(bVisible);
    if (self)
        Q_EMIT visibilityChanged(bVisible);
    if (self)
        m_toggling = false;
}

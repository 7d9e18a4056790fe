#include "retranslate_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtCore/QVariant>
#include <QtWidgets/QWidget>

#include <utility>

namespace {

// A widget passes the event on to all of its children.
class Retranslator : public QObject
{
public:
    Retranslator(QWidget* widget, std::function<void()> setTexts)
        : QObject(widget), m_setTexts(std::move(setTexts))
    {
    }

    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::LanguageChange)
            m_setTexts();
        return QObject::event(event);
    }

private:
    const std::function<void()> m_setTexts;
};

// The texts of a form, by their objects and properties.
using Texts = QHash<std::pair<QObject*, QByteArray>, QString>;

Texts textsOf(QWidget* form)
{
    static const char* const names[] = {"windowTitle",    "toolTip", "whatsThis",
                                        "accessibleName", "title",   "text"};
    Texts texts;
    QObjectList objects = form->findChildren<QObject*>();
    objects.append(form);
    for (QObject* object : std::as_const(objects)) {
        for (const char* name : names) {
            const QVariant text = object->property(name);
            if (text.isValid())
                texts.insert({object, name}, text.toString());
        }
    }
    return texts;
}

// A switch may come as several events, one for each catalogue.
class LanguageNotice : public QObject
{
    Q_OBJECT
public:
    explicit LanguageNotice(QCoreApplication* application) : QObject(application)
    {
        application->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::LanguageChange && watched == parent() &&
            !std::exchange(m_isPending, true))
            QMetaObject::invokeMethod(this, &LanguageNotice::tell, Qt::QueuedConnection);
        return false;
    }

Q_SIGNALS:
    void changed();

private:
    void tell()
    {
        m_isPending = false;
        Q_EMIT changed();
    }

    bool m_isPending = false;
};

} // namespace

void retranslated(QWidget* widget, const std::function<void()>& setTexts)
{
    new Retranslator(widget, setTexts);
    setTexts();
}

void retranslatedForm(QWidget* widget, const std::function<void()>& retranslateUi)
{
    new Retranslator(widget, [widget, retranslateUi, own = textsOf(widget)]() mutable {
        const Texts before = textsOf(widget);
        retranslateUi();
        const Texts now = textsOf(widget);
        for (auto it = before.cbegin(); it != before.cend(); ++it) {
            if (own.value(it.key()) != it.value() && now.value(it.key()) != it.value())
                it.key().first->setProperty(it.key().second, it.value());
        }
        own = now;
    });
}

void whenLanguageChanges(QObject* context, const std::function<void()>& tell)
{
    static QPointer<LanguageNotice> notice;
    if (!notice && QCoreApplication::instance())
        notice = new LanguageNotice(QCoreApplication::instance());
    if (notice)
        QObject::connect(notice, &LanguageNotice::changed, context, tell);
}

void setOwnText(QObject* object, const char* name, const QString& text)
{
    const QByteArray own = QByteArray("_kestrel_") + name;
    const QVariant before = object->property(own);
    if (before.isValid() && before != object->property(name))
        return;
    object->setProperty(name, text);
    object->setProperty(own, text);
}

#include "retranslate.moc"

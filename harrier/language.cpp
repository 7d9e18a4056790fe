#include "language.h"

#include <Kestrel/QvelLanguage>

#include <QtCore/QEvent>
#include <QtCore/QLocale>
#include <QtCore/QPointer>
#include <QtCore/QTranslator>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

#include <memory>
#include <utility>

static void initCatalogue() // by a name that is in no namespace
{
    Q_INIT_RESOURCE(harrier_translations);
}

namespace {

QString currentName;

// A widget passes the event on to its children.
class Follower : public QObject
{
public:
    Follower(QWidget* widget, std::function<void()> setTexts)
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

// The desktop's formats, too, where its language is the wanted one: there is more than one English.
QLocale localeOf(const QString& name)
{
    const QLocale wanted(name);
    const QLocale system = QLocale::system();
    const bool isOther = wanted.language() != system.language();
    return Language::isKnown(name) && isOther ? wanted : system;
}

} // namespace

bool Language::isKnown(const QString& name)
{
    return name == QLatin1String("en") || name == QLatin1String("de");
}

void Language::install(const QString& name)
{
    static QPointer<QTranslator> installed;

    initCatalogue();
    currentName = name;
    const QLocale locale = localeOf(name);
    QString language = QStringLiteral("en");
    auto translator = std::make_unique<QTranslator>();
    const QStringList names = locale.uiLanguages();
    for (const QString& each : names) {
        const bool isThere =
            translator->load(QLocale(each), QStringLiteral("harrier"), QStringLiteral("_"),
                             QStringLiteral(":/harrier/translations"));
        if (isThere)
            language = each;
        if (isThere || QLocale(each).language() == QLocale::English)
            break;
    }
    const QPointer<QTranslator> before =
        std::exchange(installed, translator->isEmpty() ? nullptr : translator.release());
    if (installed) {
        installed->setParent(qApp);
        QCoreApplication::installTranslator(installed);
    }
    delete before;
    qvelInstallLanguage(QLocale(language));
    QLocale::setDefault(locale);
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
        window->setLocale(locale);
}

QString Language::current()
{
    return currentName;
}

void Language::follow(QWidget* widget, const std::function<void()>& setTexts)
{
    new Follower(widget, setTexts);
    setTexts();
}

#include "language.h"

#include <QtCore/QDir> // Q_INIT_RESOURCE
#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtCore/QPointer>
#include <QtCore/QTranslator>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTabBar>
#include <QtWidgets/QToolButton>

#include <memory>
#include <utility>

static void initTranslations()
{
    Q_INIT_RESOURCE(kestrel_translations);
}

namespace {

// The language before the last one goes when the new one is there: no text is English in between.
void replace(QPointer<QTranslator>& installed, std::unique_ptr<QTranslator> translator)
{
    const QPointer<QTranslator> before = std::exchange(installed, translator.release());
    if (installed) {
        installed->setParent(QCoreApplication::instance());
        QCoreApplication::installTranslator(installed);
    }
    delete before; // which also removes it
}

// Qt's own texts of tab bars, which do not follow by themselves.
void retranslateTabBars()
{
    const char* const closeTab = "Close Tab"; // in Qt's catalogue, not in ours
    const std::pair<const char*, const char*> scrolling[] = {{"ScrollLeftButton", "Scroll Left"},
                                                             {"ScrollRightButton", "Scroll Right"}};
    const auto widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        const auto* bar = qobject_cast<QTabBar*>(widget);
        if (widget->inherits("CloseButton"))
            widget->setToolTip(QCoreApplication::translate("CloseButton", closeTab));
        for (const auto& [name, text] : scrolling)
            if (auto* button = bar ? bar->findChild<QToolButton*>(QLatin1String(name)) : nullptr)
                button->setAccessibleName(QTabBar::tr(text));
    }
}

void install(std::unique_ptr<QTranslator> qt, std::unique_ptr<QTranslator> kestrel)
{
    static QPointer<QTranslator> ofQt, ofKestrel;
    replace(ofQt, std::move(qt));
    replace(ofKestrel, std::move(kestrel));
    retranslateTabBars();
}

} // namespace

bool qvelInstallLanguage(const QLocale& locale)
{
    initTranslations();
    const QStringList names = locale.uiLanguages();
    for (const QString& name : names) {
        const QLocale language(name);
        if (language.language() == QLocale::English || language.language() == QLocale::C) {
            install(nullptr, nullptr);
            return true;
        }
        auto translator = std::make_unique<QTranslator>();
        const QString prefix = QStringLiteral("_");
        if (!translator->load(language, QStringLiteral("kestrel"), prefix,
                              QStringLiteral(":/kestrel/translations")))
            continue;
        auto qt = std::make_unique<QTranslator>();
        if (!qt->load(language, QStringLiteral("qtbase"), prefix,
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            qt.reset();
        install(std::move(qt), std::move(translator));
        return true;
    }
    return false;
}

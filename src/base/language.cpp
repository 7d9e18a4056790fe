#include "language.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir> // Q_INIT_RESOURCE
#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtCore/QPointer>
#include <QtCore/QTranslator>

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

} // namespace

bool qvelInstallLanguage(const QLocale& locale)
{
    static QPointer<QTranslator> ofQt, ofKestrel;

    initTranslations();
    const QStringList names = locale.uiLanguages();
    for (const QString& name : names) {
        const QLocale language(name);
        if (language.language() == QLocale::English || language.language() == QLocale::C) {
            replace(ofQt, nullptr);
            replace(ofKestrel, nullptr);
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
        replace(ofQt, std::move(qt));
        replace(ofKestrel, std::move(translator));
        return true;
    }
    return false;
}

#include "nameeditors.h"

#include "base/editorhelpers_p.h"

#include <QtWidgets/QSpinBox>

#include <limits>

namespace {

constexpr int localeWidth = 40;

QSpinBox* createNamespaceIndex()
{
    auto* spin = new QSpinBox;
    spin->setRange(0, std::numeric_limits<OpcUa_UInt16>::max());
    return spin;
}

QLineEdit* createLocale()
{
    auto* edit = new QLineEdit;
    edit->setMaximumWidth(localeWidth);
    showInToolTip(edit);
    return edit;
}

QString textOf(const UaString& text)
{
    return text.toQString();
}

UaString textOf(const QLineEdit* edit)
{
    return UaString(edit->text());
}

} // namespace

QvelWidgetQualifiedName::QvelWidgetQualifiedName(QvelWidgetFlags flags, QWidget* parent,
                                                 Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_namespaceIndex(createNamespaceIndex()),
      m_name(new QLineEdit)
{
    registerValueTypes<UaVariant, UaQualifiedName>();
    applyFlags(m_namespaceIndex, flags);
    applyFlags(m_name, flags);
    retranslated(this, [this] {
        m_namespaceIndex->setAccessibleName(tr("Namespace index"));
        m_name->setAccessibleName(tr("Name"));
    });
    layOutInline(this, 2, m_namespaceIndex, m_name);
    connect(m_namespaceIndex, &QSpinBox::valueChanged, this,
            &QvelWidgetQualifiedName::sltQualifiedNameChanged);
    connect(m_name, &QLineEdit::textChanged, this,
            &QvelWidgetQualifiedName::sltQualifiedNameChanged);
}

QvelDialogWidgetQualifiedName::QvelDialogWidgetQualifiedName(QvelDialogWidgetFlags flags,
                                                             QWidget* parent,
                                                             Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags), m_namespaceIndex(createNamespaceIndex()),
      m_name(new QLineEdit)
{
    registerValueTypes<UaVariant, UaQualifiedName>();
    QGridLayout* grid = insertDialogGrid(mainLayout());
    // Not translated.
    addDialogRow(
        grid, [] { return QStringLiteral("NsIndex:"); }, m_namespaceIndex, flags);
    addDialogRow(
        grid, [] { return QStringLiteral("Name:"); }, m_name, flags);
    connect(m_namespaceIndex, &QSpinBox::valueChanged, this,
            &QvelDialogWidgetQualifiedName::sltQualifiedNameChanged);
    connect(m_name, &QLineEdit::textChanged, this,
            &QvelDialogWidgetQualifiedName::sltQualifiedNameChanged);
}

QvelWidgetLocalizedText::QvelWidgetLocalizedText(QvelWidgetFlags flags, QWidget* parent,
                                                 Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_locale(createLocale()), m_text(new QLineEdit)
{
    registerValueTypes<UaVariant, UaLocalizedText>();
    applyFlags(m_locale, flags);
    applyFlags(m_text, flags);
    retranslated(this, [this] {
        m_locale->setAccessibleName(tr("Locale"));
        m_text->setAccessibleName(tr("Text"));
    });
    layOutInline(this, 2, m_locale, m_text);
    for (QLineEdit* edit : {m_locale, m_text})
        connect(edit, &QLineEdit::textChanged, this,
                &QvelWidgetLocalizedText::sltLocalizedTextChanged);
}

QvelDialogWidgetLocalizedText::QvelDialogWidgetLocalizedText(QvelDialogWidgetFlags flags,
                                                             QWidget* parent,
                                                             Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags), m_locale(createLocale()),
      m_text(new QLineEdit)
{
    registerValueTypes<UaVariant, UaLocalizedText>();
    QGridLayout* grid = insertDialogGrid(mainLayout());
    // Not translated.
    addDialogRow(
        grid, [] { return QStringLiteral("Locale:"); }, m_locale, flags);
    addDialogRow(
        grid, [] { return QStringLiteral("Text:"); }, m_text, flags);
    for (QLineEdit* edit : {m_locale, m_text})
        connect(edit, &QLineEdit::textChanged, this,
                &QvelDialogWidgetLocalizedText::sltLocalizedTextChanged);
}

// What the inline and the dialog editor of a type have in common.

#define KESTREL_QUALIFIED_NAME_EDITOR(Editor)                                                      \
    Editor::~Editor() = default;                                                                   \
    KESTREL_SCALAR_EDITOR(Editor, QualifiedName, qualifiedName)                                    \
    UaQualifiedName Editor::qualifiedName(bool* ok) const                                          \
    {                                                                                              \
        if (ok)                                                                                    \
            *ok = true;                                                                            \
        return UaQualifiedName(textOf(m_name), OpcUa_UInt16(m_namespaceIndex->value()));           \
    }                                                                                              \
    void Editor::setQualifiedName(const UaQualifiedName& qualifiedName)                            \
    {                                                                                              \
        setName(textOf(qualifiedName.name()));                                                     \
        setNamespaceIndex(qualifiedName.namespaceIndex());                                         \
    }                                                                                              \
    void Editor::setNamespaceIndex(OpcUa_UInt16 namespaceIndex)                                    \
    {                                                                                              \
        m_namespaceIndex->setValue(namespaceIndex);                                                \
    }                                                                                              \
    void Editor::setName(const QString& name)                                                      \
    {                                                                                              \
        showWhole(m_name, name);                                                                   \
    }

KESTREL_QUALIFIED_NAME_EDITOR(QvelWidgetQualifiedName)
KESTREL_QUALIFIED_NAME_EDITOR(QvelDialogWidgetQualifiedName)

#define KESTREL_LOCALIZED_TEXT_EDITOR(Editor)                                                      \
    Editor::~Editor() = default;                                                                   \
    KESTREL_SCALAR_EDITOR(Editor, LocalizedText, localizedText)                                    \
    UaLocalizedText Editor::localizedText(bool* ok) const                                          \
    {                                                                                              \
        if (ok)                                                                                    \
            *ok = true;                                                                            \
        return UaLocalizedText(textOf(m_locale), textOf(m_text));                                  \
    }                                                                                              \
    void Editor::setLocalizedText(const UaLocalizedText& localizedText)                            \
    {                                                                                              \
        setLocale(textOf(localizedText.locale()));                                                 \
        setText(textOf(localizedText.text()));                                                     \
    }                                                                                              \
    void Editor::setLocale(const QString& locale)                                                  \
    {                                                                                              \
        showWhole(m_locale, locale);                                                               \
    }                                                                                              \
    void Editor::setText(const QString& text)                                                      \
    {                                                                                              \
        showWhole(m_text, text);                                                                   \
    }

KESTREL_LOCALIZED_TEXT_EDITOR(QvelWidgetLocalizedText)
KESTREL_LOCALIZED_TEXT_EDITOR(QvelDialogWidgetLocalizedText)

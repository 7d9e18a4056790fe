#include "maskeditors.h"

#include "base/editorhelpers_p.h"

#include <type_traits>

namespace {

// Builds the one control of a mask editor; neither focus proxy nor event filter goes with it.
template <class Combo, class Editor>
void setUp(Combo*& combo, Editor* editor, void (Editor::*changed)())
{
    constexpr int minimumWidth = 80;
    registerValueTypes<UaVariant>();
    combo = new Combo;
    combo->setMinimumWidth(minimumWidth);
    combo->setAccessibleName(
        QString::fromLatin1(Editor::staticMetaObject.className() + qstrlen("QvelWidget")));
    applyFlags(combo, editor->flags());
    layOutInline(editor, 2, combo);
    QObject::connect(combo, &Combo::flagsChanged, editor, changed);
}

template <class Editor, class T>
void emitMask(Editor* editor, T (Editor::*getter)(bool*) const, void (Editor::*changed)(T))
{
    Q_EMIT editor->valueTextChanged();
    Q_EMIT(editor->*changed)((editor->*getter)(nullptr));
}

} // namespace

// The five editors differ by the type of their value and by what they call it.
#define KESTREL_MASK_EDITOR(Editor, Type, name, Name)                                              \
    Editor::Editor(QvelWidgetFlags flags, QWidget* parent, Qt::WindowFlags windowFlags)            \
        : QvelWidgetBase(flags, parent, windowFlags)                                               \
    {                                                                                              \
        setUp(m_combo, this, &Editor::slt##Name##Changed);                                         \
    }                                                                                              \
    Editor::~Editor() = default;                                                                   \
    KESTREL_EDITOR_VALUE(Editor, Type, name, Name)                                                 \
    OpcUa_##Type Editor::name(bool* ok) const                                                      \
    {                                                                                              \
        if (ok)                                                                                    \
            *ok = true;                                                                            \
        return OpcUa_##Type(m_combo->flags().toInt());                                             \
    }                                                                                              \
    void Editor::set##Name(OpcUa_##Type name)                                                      \
    {                                                                                              \
        using Flags = std::decay_t<decltype(m_combo->flags())>;                                    \
        m_combo->setFlags(Flags::fromInt(int(name)));                                              \
    }                                                                                              \
    void Editor::slt##Name##Changed()                                                              \
    {                                                                                              \
        emitMask(this, &Editor::name, &Editor::name##Changed);                                     \
    }

KESTREL_MASK_EDITOR(QvelWidgetWriteMask, UInt32, attributeWriteMask, AttributeWriteMask)
KESTREL_MASK_EDITOR(QvelWidgetBrowseResultMask, UInt32, browseResultMask, BrowseResultMask)
KESTREL_MASK_EDITOR(QvelWidgetDiagnosticsMask, UInt32, diagnosticsMask, DiagnosticsMask)
KESTREL_MASK_EDITOR(QvelWidgetEventNotifierMask, Byte, eventNotifierMask, EventNotifierMask)
KESTREL_MASK_EDITOR(QvelWidgetAccessLevelMask, Byte, accessLevelMask, AccessLevelMask)

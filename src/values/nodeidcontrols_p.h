#pragma once

#include "platform/types/uanodeid.h"

#include <QtCore/QStringList>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QSpinBox>

/// The three controls of a NodeId and the conversion between them and the value. Serves every
/// editor that holds a NodeId, which owns the controls through its layout.
class NodeIdControls
{
public:
    /// What the line of the identifier asks room for.
    enum class Room { Any, ForGuid };

    explicit NodeIdControls(Room room = Room::Any);

    /// The texts of the identifier types, in the order of their numbers; to be set before the
    /// controls are connected, and again in each new language.
    void setTypeNames(const QStringList& names);

    /// Connects the controls to an editor's slots. The identifier follows a new type before the
    /// change is told.
    template <class Editor>
    void connectTo(Editor* editor, void (Editor::*typeChanged)(int), void (Editor::*changed)())
    {
        const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
        QObject::connect(type, indexChanged, editor, typeChanged);
        QObject::connect(namespaceIndex, &QSpinBox::valueChanged, editor, changed);
        QObject::connect(type, indexChanged, editor, changed);
        QObject::connect(identifier, &QLineEdit::textChanged, editor, changed);
    }

    /// Gives the identifier the validator or mask, and the default text, of a type.
    void setIdentifierType(int identifierType);
    UaNodeId nodeId(bool* ok = nullptr) const;
    void setNodeId(const UaNodeId& id);

    QSpinBox* const namespaceIndex;
    QComboBox* const type;
    QLineEdit* const identifier;
};

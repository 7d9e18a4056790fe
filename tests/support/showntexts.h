#pragma once

#include <QtCore/QAbstractItemModel>
#include <QtCore/QMetaProperty>
#include <QtWidgets/QComboBox>

/// All texts of all that a widget is made of: its properties, and what models say in their headers.
inline QStringList shownTexts(const QWidget* widget)
{
    QStringList found;
    QList<const QObject*> objects{widget};
    for (const QObject* child : widget->findChildren<QObject*>())
        objects << child;
    for (const QObject* object : objects) {
        const QMetaObject* meta = object->metaObject();
        const auto add = [&](const QString& what, const QString& text) {
            if (!text.isEmpty())
                found << QStringLiteral("%1 %2: %3").arg(meta->className(), what, text);
        };
        for (int i = 0; i < meta->propertyCount(); ++i) {
            if (meta->property(i).typeId() == QMetaType::QString)
                add(meta->property(i).name(), meta->property(i).read(object).toString());
        }
        if (const auto* combo = qobject_cast<const QComboBox*>(object)) {
            for (int i = 0; i < combo->count(); ++i)
                add("item", combo->itemText(i));
        }
        if (const auto* model = qobject_cast<const QAbstractItemModel*>(object)) {
            for (int i = 0; i < model->columnCount(); ++i) {
                for (const int role : {Qt::DisplayRole, Qt::ToolTipRole})
                    add("header", model->headerData(i, Qt::Horizontal, role).toString());
            }
        }
    }
    return found;
}

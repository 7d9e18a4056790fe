#pragma once

#include <QtWidgets/QtWidgets>

/// All that a widget says: texts of properties and lists, and what models have in their headers;
/// on request also what they have at their top.
inline QStringList shownTexts(QWidget* widget, bool withRows = false)
{
    QStringList texts;
    for (QObject* object : QObjectList{widget} + widget->findChildren<QObject*>()) {
        if (!object->isWidgetType() && !qobject_cast<QAction*>(object))
            continue;
        const QMetaObject* meta = object->metaObject();
        for (int i = 0; i < meta->propertyCount(); ++i)
            if (meta->property(i).typeId() == QMetaType::QString &&
                qstrcmp(meta->property(i).name(), "selectedText") != 0)
                texts << meta->property(i).read(object).toString();
        const auto* combo = qobject_cast<QComboBox*>(object);
        const auto* view = qobject_cast<QAbstractItemView*>(object);
        const auto* model = combo ? combo->model() : view ? view->model() : nullptr;
        for (int column = 0; model && column < model->columnCount(); ++column)
            for (const int role : {Qt::DisplayRole, Qt::ToolTipRole}) {
                texts << model->headerData(column, Qt::Horizontal, role).toString();
                for (int row = 0; (combo || withRows) && row < model->rowCount(); ++row)
                    texts << model->index(row, column).data(role).toString();
            }
    }
    texts.removeAll(QString());
    return texts;
}

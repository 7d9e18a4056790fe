#pragma once

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtDesigner/QDesignerContainerExtension>
#include <QtDesigner/QDesignerTaskMenuExtension>
#include <QtDesigner/QExtensionFactory>

class QDesignerFormEditorInterface;
class QvelToolBox;

/// The pages of a tool box on a form: Designer adds and removes them, and a title stays with its
/// page. A click on a page or its header makes it the current one.
class ToolBoxPages : public QObject, public QDesignerContainerExtension
{
    Q_OBJECT
    Q_INTERFACES(QDesignerContainerExtension)
public:
    ToolBoxPages(QvelToolBox* box, QDesignerFormEditorInterface* core, QObject* parent);

    int count() const override;
    QWidget* widget(int index) const override;
    int currentIndex() const override;
    void setCurrentIndex(int index) override;
    bool canAddWidget() const override { return true; }
    void addWidget(QWidget* page) override;
    void insertWidget(int index, QWidget* page) override;
    bool canRemove(int /*index*/) const override { return true; }
    void remove(int index) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void storeTitles();

    QvelToolBox* const m_box;
    QDesignerFormEditorInterface* const m_core;
    QString m_stored;                        // titles, in the property sheet
    QHash<const QObject*, QString> m_titles; // of pages that were removed and may come back
};

/// Moves the current page up and down, from the tool box's context menu.
class ToolBoxMenu : public QObject, public QDesignerTaskMenuExtension
{
    Q_OBJECT
    Q_INTERFACES(QDesignerTaskMenuExtension)
public:
    ToolBoxMenu(QvelToolBox* box, QDesignerFormEditorInterface* core, QObject* parent);

    QList<QAction*> taskActions() const override;

private:
    void move(int step);

    QvelToolBox* const m_box;
    QDesignerFormEditorInterface* const m_core;
    QAction* const m_up;
    QAction* const m_down;
};

/// Makes both for the tool boxes of all forms.
class ToolBoxExtensions : public QExtensionFactory
{
    Q_OBJECT
public:
    explicit ToolBoxExtensions(QDesignerFormEditorInterface* core);

protected:
    QObject* createExtension(QObject* object, const QString& iid, QObject* parent) const override;

private:
    QDesignerFormEditorInterface* const m_core;
};

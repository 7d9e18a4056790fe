#pragma once

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

class QLabel;
class QPushButton;
class QvelDiscoveryWidget;

/// Says what to do next in a discovery tree, by its current entry: what the entry is for, why it
/// is empty, and for a server that cannot be reached under its name, another one to try.
class DiscoveryHint : public QWidget
{
    Q_OBJECT
public:
    explicit DiscoveryHint(QWidget* parent = nullptr);

    /// The tree is not owned, and may go.
    void setTree(QvelDiscoveryWidget* tree);

private:
    void refresh();

    QPointer<QvelDiscoveryWidget> m_tree;
    QLabel* m_text;
    QPushButton* m_look;
    QString m_url; // that the button adds
};

/// URLs that lead to the server of the current entry by the names under which it, or who told of
/// it, has answered; without `url` itself. The nearest first.
QStringList otherUrls(const QvelDiscoveryWidget& tree, const QString& url);

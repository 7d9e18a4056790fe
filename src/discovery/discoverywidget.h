#pragma once

#include "../kestrelexport.h"
#include "discoverysetting.h"

#include <QtWidgets/QTreeView>

#include <memory>

class QvelDiscoveryCBInterface;

/// A tree in which the user finds a server and picks one of its endpoints.
///
/// The view creates and owns its model; the host owns the view. User-interface thread only. In a
/// form it is empty, and does nothing, until the program calls start().
class KESTREL_EXPORT QvelDiscoveryWidget : public QTreeView
{
    Q_OBJECT
    /// These three are taken when the view starts.
    Q_PROPERTY(OpcType opcType READ opcType WRITE setOpcType)
    Q_PROPERTY(int timeout READ timeout WRITE setTimeout)
    Q_PROPERTY(QString sessionName READ sessionName WRITE setSessionName)
public:
    /// What is looked for.
    enum OpcType : int {
        OpcUa = 0, ///< OPC UA servers and their endpoints
        ComDa = 1, ///< OPC Classic Data Access servers
        ComAe = 2  ///< OPC Classic Alarms and Events servers
    };
    Q_ENUM(OpcType)

    explicit QvelDiscoveryWidget(QWidget* parent = nullptr);
    /// Starts at once. `callback` is mandatory and must outlive the view. `timeout` is the
    /// milliseconds that each service call may take; `sessionName` goes into every configuration
    /// that is found.
    QvelDiscoveryWidget(OpcType opcType, QvelDiscoveryCBInterface* callback, int timeout,
                        const QString& sessionName, QWidget* parent = nullptr);
    /// Writes the current node's name to the settings store; the model then writes the user's
    /// additions. Ends running requests at once.
    ~QvelDiscoveryWidget() override;

    /// Looks for servers, anew if it has done so already, which then ends as in the destructor.
    /// `callback` is mandatory and must outlive the view.
    void start(QvelDiscoveryCBInterface* callback);

    OpcType opcType() const;
    void setOpcType(OpcType type);
    /// Milliseconds; 10000 unless it is given.
    int timeout() const;
    void setTimeout(int timeout);
    QString sessionName() const;
    void setSessionName(const QString& name);

    /// The configuration of the current endpoint; a default record when the current node is none.
    QvelDiscoverySetting currentConfiguration() const;
    /// Files a configuration that the host used under "Recently Used" and makes its entry current.
    /// False when the user declined to overwrite an entry of the same name.
    bool updateEndpointConfiguration(const QvelDiscoverySetting& setting);
    /// Number of entries under "Recently Used".
    int noOfRecentNodes() const;

Q_SIGNALS:
    /// An endpoint became current; OPC UA only.
    void endpointSelected(QvelDiscoverySetting serverConfig);
    /// An endpoint was double-clicked, or Enter was pressed on it; OPC UA only.
    void endpointActivated(QvelDiscoverySetting serverConfig);
    /// As endpointSelected(), for OPC Classic servers.
    void comServerSelected(QvelDiscoverySetting serverConfig);
    /// As endpointActivated(), for OPC Classic servers.
    void comServerActivated(QvelDiscoverySetting serverConfig);

protected Q_SLOTS:
    void rowsInserted(const QModelIndex& parent, int start, int end) override;

protected:
    bool viewportEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private Q_SLOTS:
    void sltContextMenu(const QPoint& pos);
    void sltEditUrl();
    void sltRebrowse();
    void sltRemove();
    void sltCurrentChanged(const QModelIndex& index);
    void sltActivated(const QModelIndex& index);

private:
    void readSettings();
    void writeSettings();

    class Private;
    std::unique_ptr<Private> d;
};

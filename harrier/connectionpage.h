#pragma once

#include <Kestrel/QvelDiscoverySetting>

#include <QtWidgets/QWidget>

class Host;
class QPushButton;
class QvelEndpointSettingsWidget;

/// The settings of a connection: filled from the endpoint that is current in the discovery tree,
/// changed by the user, and handed back.
class ConnectionPage : public QWidget
{
    Q_OBJECT
public:
    /// `host` must outlive the page.
    explicit ConnectionPage(Host& host, QWidget* parent = nullptr);
    /// Keeps the directories of the file dialogs.
    ~ConnectionPage() override;

    /// The endpoint that filled the form last, with the settings that the user made.
    QvelDiscoverySetting connection() const;

private:
    /// Fills the form when another endpoint became current; without one, the form stays.
    void setEndpoint(const QvelDiscoverySetting& endpoint);
    /// By the tool tips of those that are offered.
    void describePolicies();

    Host& m_host;
    QvelEndpointSettingsWidget* m_form;
    QPushButton* m_use;
    QPushButton* m_connect;
    QvelDiscoverySetting m_current;
    QvelDiscoverySetting m_base; ///< the last endpoint that was current
};

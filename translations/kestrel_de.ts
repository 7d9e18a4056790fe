<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>ArgumentsModel</name>
    <message>
        <source>Argument %1</source>
        <translation>Argument %1</translation>
    </message>
    <message>
        <source>Not taken. %1</source>
        <translation>Nicht übernommen. %1</translation>
    </message>
    <message>
        <source>Argument</source>
        <translation>Argument</translation>
    </message>
    <message>
        <source>Data Type</source>
        <translation>Datentyp</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>%1, not %2</source>
        <translation>%1 statt %2</translation>
    </message>
</context>
<context>
    <name>CertificateManager</name>
    <message>
        <source>Manage Certificates</source>
        <translation>Zertifikate verwalten</translation>
    </message>
    <message>
        <source>&lt;html&gt;&lt;head/&gt;&lt;body&gt;&lt;p&gt;&lt;span style=&quot; font-weight:600;&quot;&gt;Manage Certificates&lt;/span&gt;&lt;br/&gt;Displays information about all certificates in the Applications certificate store. Trust, reject, view and delete certificates by using the context menu.&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation>&lt;html&gt;&lt;head/&gt;&lt;body&gt;&lt;p&gt;&lt;span style=&quot; font-weight:600;&quot;&gt;Zertifikate verwalten&lt;/span&gt;&lt;br/&gt;Zeigt alle Zertifikate im Zertifikatsspeicher der Anwendung. Über das Kontextmenü kann ihnen vertraut werden, und sie können abgelehnt, angezeigt und gelöscht werden.&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</translation>
    </message>
    <message>
        <source>Certificates</source>
        <translation>Zertifikate</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Open Certificate Location</source>
        <translation>Zertifikatsordner öffnen</translation>
    </message>
    <message>
        <source>Copy Application Certificate To...</source>
        <translation>Anwendungszertifikat kopieren nach...</translation>
    </message>
    <message>
        <source>Create new Application Certificate...</source>
        <translation>Neues Anwendungszertifikat erstellen...</translation>
    </message>
    <message>
        <source>Trust</source>
        <translation>Vertrauen</translation>
    </message>
    <message>
        <source>Set the state of this certificate to Trusted</source>
        <translation>Dieses Zertifikat als vertrauenswürdig einstufen</translation>
    </message>
    <message>
        <source>Reject</source>
        <translation>Ablehnen</translation>
    </message>
    <message>
        <source>Set the state of this certificate to Rejected</source>
        <translation>Dieses Zertifikat als abgelehnt einstufen</translation>
    </message>
    <message>
        <source>Open...</source>
        <translation>Öffnen...</translation>
    </message>
    <message>
        <source>Open Certificate in External Viewer</source>
        <translation>Zertifikat in einem anderen Programm anzeigen</translation>
    </message>
    <message>
        <source>Create New...</source>
        <translation>Neu erstellen...</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete the certificate</source>
        <translation>Das Zertifikat löschen</translation>
    </message>
</context>
<context>
    <name>DataViewTable</name>
    <message>
        <source>The clipboard holds no NodeIds.</source>
        <translation>Die Zwischenablage enthält keine NodeIds.</translation>
    </message>
    <message>
        <source>Drop variables here, paste NodeIds, or type one above.</source>
        <translation>Ziehen Sie Variablen hierher, fügen Sie NodeIds ein, oder tippen Sie oben eine.</translation>
    </message>
    <message>
        <source>Nothing was added.</source>
        <translation>Es wurde nichts hinzugefügt.</translation>
    </message>
</context>
<context>
    <name>ElementTable</name>
    <message>
        <source>Elements</source>
        <translation>Elemente</translation>
    </message>
    <message>
        <source>The value was replaced while one of its elements was edited. The edit was dropped.</source>
        <translation>Der Wert wurde ersetzt, während eines seiner Elemente bearbeitet wurde. Die Eingabe wurde verworfen.</translation>
    </message>
    <message>
        <source>This text is too long to be edited.</source>
        <translation>Dieser Text ist zu lang, um bearbeitet zu werden.</translation>
    </message>
</context>
<context>
    <name>EndpointSettingsWidget</name>
    <message>
        <source>Server Configuration</source>
        <translation>Serverkonfiguration</translation>
    </message>
    <message>
        <source>&lt;b&gt;Server Information&lt;/b&gt;&lt;br&gt;Specifies the endpoint URL to connect to. Always begins with &apos;opc.tcp:&apos;.</source>
        <translation>&lt;b&gt;Serverinformation&lt;/b&gt;&lt;br&gt;Die Endpunkt-URL, zu der die Verbindung aufgebaut wird. Sie beginnt immer mit &apos;opc.tcp:&apos;.</translation>
    </message>
    <message>
        <source>Server Information</source>
        <translation>Serverinformation</translation>
    </message>
    <message>
        <source>The endpoint URL of the server to connect to</source>
        <translation>Die Endpunkt-URL des Servers, zu dem die Verbindung aufgebaut wird</translation>
    </message>
    <message>
        <source>Endpoint Url</source>
        <translation>Endpunkt-URL</translation>
    </message>
    <message>
        <source>&lt;b&gt;Security Settings&lt;/b&gt;&lt;br&gt;Specify the security settings for the connection.</source>
        <translation>&lt;b&gt;Sicherheitseinstellungen&lt;/b&gt;&lt;br&gt;Die Sicherheitseinstellungen der Verbindung.</translation>
    </message>
    <message>
        <source>Security Settings</source>
        <translation>Sicherheitseinstellungen</translation>
    </message>
    <message>
        <source>The security policy to be used for the connection</source>
        <translation>Die Sicherheitsrichtlinie der Verbindung</translation>
    </message>
    <message>
        <source>Security Policy</source>
        <translation>Sicherheitsrichtlinie</translation>
    </message>
    <message>
        <source>None</source>
        <translation>None</translation>
    </message>
    <message>
        <source>Basic128Rsa15</source>
        <translation>Basic128Rsa15</translation>
    </message>
    <message>
        <source>Basic256</source>
        <translation>Basic256</translation>
    </message>
    <message>
        <source>The message security mode to be used for the connection</source>
        <translation>Der Sicherheitsmodus der Nachrichten dieser Verbindung</translation>
    </message>
    <message>
        <source>Message Security Mode</source>
        <translation>Nachrichtensicherheit</translation>
    </message>
    <message>
        <source>Sign</source>
        <translation>Sign</translation>
    </message>
    <message>
        <source>Sign &amp; Encrypt</source>
        <translation>Sign &amp; Encrypt</translation>
    </message>
    <message>
        <source>&lt;b&gt;Authentication Settings&lt;/b&gt;&lt;br&gt;Select the user token type for the connection here. If store password is selected, the password will be stored just as long as Harrier is running and will not be written to disk.</source>
        <translation>&lt;b&gt;Anmeldung&lt;/b&gt;&lt;br&gt;Hier wird gewählt, wie sich der Benutzer anmeldet. Wenn das Kennwort gespeichert wird, dann nur, solange Harrier läuft; es wird nicht auf den Datenträger geschrieben.</translation>
    </message>
    <message>
        <source>Authentication Settings</source>
        <translation>Anmeldung</translation>
    </message>
    <message>
        <source>Log on to the server as anonymous user</source>
        <translation>Anonym am Server anmelden</translation>
    </message>
    <message>
        <source>Anonymous</source>
        <translation>Anonym</translation>
    </message>
    <message>
        <source>Log on to the server using username / password authentication</source>
        <translation>Mit Benutzername und Kennwort am Server anmelden</translation>
    </message>
    <message>
        <source>Username</source>
        <translation>Benutzername</translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;The username used for authentication&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;Der Benutzername für die Anmeldung&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;The password used for authentication&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;Das Kennwort für die Anmeldung&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Kennwort</translation>
    </message>
    <message>
        <source>Store the password</source>
        <translation>Das Kennwort speichern</translation>
    </message>
    <message>
        <source>Store</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Log on to the server using a certificate (Currently not supported)</source>
        <translation>Mit einem Zertifikat am Server anmelden (derzeit nicht unterstützt)</translation>
    </message>
    <message>
        <source>Certificate</source>
        <translation>Zertifikat</translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;The certificate used for authentication&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;Das Zertifikat für die Anmeldung&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;Load certificate file&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;Zertifikatsdatei laden&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</translation>
    </message>
    <message>
        <source>Load certificate file</source>
        <translation>Zertifikatsdatei laden</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>The private key associated with the certificate</source>
        <translation>Der private Schlüssel zum Zertifikat</translation>
    </message>
    <message>
        <source>Private Key</source>
        <translation>Privater Schlüssel</translation>
    </message>
    <message>
        <source>Load private key file</source>
        <translation>Datei des privaten Schlüssels laden</translation>
    </message>
    <message>
        <source>Session Settings</source>
        <translation>Sitzungseinstellungen</translation>
    </message>
    <message>
        <source>The session name to be used for the connection</source>
        <translation>Der Sitzungsname der Verbindung</translation>
    </message>
    <message>
        <source>Session Name</source>
        <translation>Sitzungsname</translation>
    </message>
</context>
<context>
    <name>NewCertificateDialog</name>
    <message>
        <source>New Application Instance Certificate</source>
        <translation>Neues Anwendungszertifikat</translation>
    </message>
    <message>
        <source>Subject:</source>
        <translation>Inhaber:</translation>
    </message>
    <message>
        <source>Common Name:</source>
        <translation>Allgemeiner Name:</translation>
    </message>
    <message>
        <source>Organization:</source>
        <translation>Organisation:</translation>
    </message>
    <message>
        <source>Organization Unit:</source>
        <translation>Organisationseinheit:</translation>
    </message>
    <message>
        <source>Locality:</source>
        <translation>Ort:</translation>
    </message>
    <message>
        <source>State:</source>
        <translation>Bundesland:</translation>
    </message>
    <message>
        <source>Country:</source>
        <translation>Land:</translation>
    </message>
    <message>
        <source>(Two letter code e.g. DE, US, ...)</source>
        <translation>(zwei Buchstaben, z. B. DE, US, ...)</translation>
    </message>
    <message>
        <source>OPC UA Information</source>
        <translation>Angaben zu OPC UA</translation>
    </message>
    <message>
        <source>Application URI:</source>
        <translation>Anwendungs-URI:</translation>
    </message>
    <message>
        <source>Domain Name:</source>
        <translation>Domänenname:</translation>
    </message>
    <message>
        <source>IP Address (only if no DN is available)</source>
        <translation>IP-Adresse (nur, wenn es keinen Domänennamen gibt)</translation>
    </message>
    <message>
        <source>Certificate Settings</source>
        <translation>Zertifikatseinstellungen</translation>
    </message>
    <message>
        <source>RSA Key Strength:</source>
        <translation>RSA-Schlüssellänge:</translation>
    </message>
    <message>
        <source>1024 bits</source>
        <translation>1024 Bit</translation>
    </message>
    <message>
        <source>2048 bits</source>
        <translation>2048 Bit</translation>
    </message>
    <message>
        <source>Certificate Validity:</source>
        <translation>Gültigkeitsdauer:</translation>
    </message>
    <message>
        <source>1 Hour</source>
        <translation>1 Stunde</translation>
    </message>
    <message>
        <source>1 Day</source>
        <translation>1 Tag</translation>
    </message>
    <message>
        <source>1 Week</source>
        <translation>1 Woche</translation>
    </message>
    <message>
        <source>1 Month</source>
        <translation>1 Monat</translation>
    </message>
    <message>
        <source>1 Year</source>
        <translation>1 Jahr</translation>
    </message>
    <message>
        <source>2 Years</source>
        <translation>2 Jahre</translation>
    </message>
    <message>
        <source>3 Years</source>
        <translation>3 Jahre</translation>
    </message>
    <message>
        <source>4 Years</source>
        <translation>4 Jahre</translation>
    </message>
    <message>
        <source>5 Years</source>
        <translation>5 Jahre</translation>
    </message>
    <message>
        <source>You can protect the access to your private key with a password. Enabling this causes the kestrel to prompt you with a password dialog at startup.</source>
        <translation>Der Zugriff auf Ihren privaten Schlüssel kann durch ein Kennwort geschützt werden. kestrel fragt dann bei jedem Start nach dem Kennwort.</translation>
    </message>
    <message>
        <source>Password protect private key</source>
        <translation>Privaten Schlüssel mit einem Kennwort schützen</translation>
    </message>
    <message>
        <source>Password:</source>
        <translation>Kennwort:</translation>
    </message>
    <message>
        <source>Password (repeat):</source>
        <translation>Kennwort (Wiederholung):</translation>
    </message>
    <message>
        <source>%1 bits</source>
        <translation>%1 Bit</translation>
    </message>
</context>
<context>
    <name>NodeSearch</name>
    <message>
        <source>Cancelled.</source>
        <translation>Abgebrochen.</translation>
    </message>
    <message>
        <source>That is enough: there may be more.</source>
        <translation>Das genügt: Es kann mehr geben.</translation>
    </message>
</context>
<context>
    <name>QAbstractTableModel</name>
    <message>
        <source>Type cannot be displayed</source>
        <translation>Der Typ kann nicht angezeigt werden</translation>
    </message>
    <message>
        <source>[%1]</source>
        <translation>[%1]</translation>
    </message>
</context>
<context>
    <name>QvelAddressSpaceModel</name>
    <message>
        <source>The session is not connected.</source>
        <translation>Die Sitzung ist nicht verbunden.</translation>
    </message>
    <message>
        <source>The node is on another server.</source>
        <translation>Der Knoten liegt auf einem anderen Server.</translation>
    </message>
    <message>
        <source>The server no longer has the namespace %1.</source>
        <translation>Der Server hat den Namensraum %1 nicht mehr.</translation>
    </message>
    <message>
        <source>Loading...</source>
        <translation>Wird geladen ...</translation>
    </message>
    <message>
        <source>%1 children came before that.</source>
        <translation>%1 Unterknoten kamen vorher an.</translation>
    </message>
    <message>
        <source>No hierarchical reference leads from %1 to %2.</source>
        <translation>Keine hierarchische Referenz führt von %1 zu %2.</translation>
    </message>
    <message>
        <source>The tree begins at another node.</source>
        <translation>Der Baum beginnt bei einem anderen Knoten.</translation>
    </message>
    <message>
        <source>There is no %1 below %2.</source>
        <translation>Unter %2 gibt es kein %1.</translation>
    </message>
    <message>
        <source>%1 is no NodeId and no browse path; one looks like i=85, nsu=urn:plant;s=Pump or /Objects/2:Plant.</source>
        <translation>%1 ist keine NodeId und kein BrowsePath; so sehen sie aus: i=85, nsu=urn:plant;s=Pump oder /Objects/2:Plant.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Browse Name</source>
        <translation>BrowseName</translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation>NodeId</translation>
    </message>
    <message>
        <source>Class</source>
        <translation>Klasse</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>Object</source>
        <translation>Object</translation>
    </message>
    <message>
        <source>Variable</source>
        <translation>Variable</translation>
    </message>
    <message>
        <source>Method</source>
        <translation>Method</translation>
    </message>
    <message>
        <source>ObjectType</source>
        <translation>ObjectType</translation>
    </message>
    <message>
        <source>VariableType</source>
        <translation>VariableType</translation>
    </message>
    <message>
        <source>ReferenceType</source>
        <translation>ReferenceType</translation>
    </message>
    <message>
        <source>DataType</source>
        <translation>DataType</translation>
    </message>
    <message>
        <source>View</source>
        <translation>View</translation>
    </message>
</context>
<context>
    <name>QvelAddressSpaceWidget</name>
    <message>
        <source>Columns</source>
        <translation>Spalten</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Forward</source>
        <translation>Vorwärts</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Next Hit</source>
        <translation>Nächster Treffer</translation>
    </message>
    <message>
        <source>Previous Hit</source>
        <translation>Voriger Treffer</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Copy NodeId</source>
        <translation>NodeId kopieren</translation>
    </message>
    <message>
        <source>Copy NodeId with Namespace URI</source>
        <translation>NodeId mit Namensraum-URI kopieren</translation>
    </message>
    <message>
        <source>Copy Browse Path</source>
        <translation>BrowsePath kopieren</translation>
    </message>
    <message>
        <source>Copy Name</source>
        <translation>Namen kopieren</translation>
    </message>
    <message>
        <source>Find a name, or go to a NodeId or browse path</source>
        <translation>Namen suchen, oder NodeId oder BrowsePath aufsuchen</translation>
    </message>
    <message>
        <source>Find or go to</source>
        <translation>Suchen oder aufsuchen</translation>
    </message>
    <message>
        <source>Address space</source>
        <translation>Adressraum</translation>
    </message>
    <message>
        <source>Looking for &quot;%1&quot; in %2 nodes: %3 found</source>
        <comment>2 and 3 are numbers</comment>
        <translation>Suche „%1“ in %2 Knoten: %3 gefunden</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was not found in %2 nodes</source>
        <translation>„%1“ wurde in %2 Knoten nicht gefunden</translation>
    </message>
    <message>
        <source>&quot;%1&quot;: %2 of %3 hits in %4 nodes</source>
        <translation>„%1“: %2 von %3 Treffern in %4 Knoten</translation>
    </message>
    <message>
        <source>Not connected to a server.</source>
        <translation>Mit keinem Server verbunden.</translation>
    </message>
</context>
<context>
    <name>QvelAttributesModel</name>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>Writing ...</source>
        <translation>Wird geschrieben ...</translation>
    </message>
    <message>
        <source>Good: The server has taken the value.</source>
        <translation>Good: Der Server hat den Wert übernommen.</translation>
    </message>
    <message>
        <source>Not sent. %1</source>
        <translation>Nicht gesendet. %1</translation>
    </message>
    <message>
        <source>Attribute</source>
        <translation>Attribut</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Last Write</source>
        <translation>Letztes Schreiben</translation>
    </message>
    <message>
        <source>The value is %1, but %2 is declared.</source>
        <translation>Der Wert ist %1, deklariert ist aber %2.</translation>
    </message>
    <message>
        <source>An edit sends %1.</source>
        <translation>Beim Bearbeiten wird %1 gesendet.</translation>
    </message>
    <message>
        <source>%1, but %2</source>
        <translation>%1, aber %2</translation>
    </message>
    <message>
        <source>Values of this type cannot be edited.</source>
        <translation>Werte dieses Typs können nicht bearbeitet werden.</translation>
    </message>
    <message>
        <source>Not writable for this user (%1).</source>
        <translation>Nicht schreibbar für diesen Benutzer (%1).</translation>
    </message>
</context>
<context>
    <name>QvelAttributesWidget</name>
    <message>
        <source>Attributes</source>
        <translation>Attribute</translation>
    </message>
    <message>
        <source>Select a node to see its attributes.</source>
        <translation>Wählen Sie einen Knoten aus, um seine Attribute zu sehen.</translation>
    </message>
    <message>
        <source>&amp;Edit Value</source>
        <translation>Wert &amp;bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Copy Value</source>
        <translation>Wert &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Refresh</source>
        <translation>&amp;Aktualisieren</translation>
    </message>
</context>
<context>
    <name>QvelCallDialog</name>
    <message>
        <source>Call</source>
        <translation>Aufruf</translation>
    </message>
    <message>
        <source>Call %1</source>
        <translation>%1 aufrufen</translation>
    </message>
</context>
<context>
    <name>QvelCallWidget</name>
    <message>
        <source>Input arguments</source>
        <translation>Eingangsargumente</translation>
    </message>
    <message>
        <source>Output arguments</source>
        <translation>Ausgangsargumente</translation>
    </message>
    <message>
        <source>C&amp;all</source>
        <translation>Auf&amp;rufen</translation>
    </message>
    <message>
        <source>Ca&amp;ncel Call</source>
        <translation>Aufruf a&amp;bbrechen</translation>
    </message>
    <message>
        <source>Earlier calls</source>
        <translation>Frühere Aufrufe</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Call the method (%1)</source>
        <translation>Methode aufrufen (%1)</translation>
    </message>
    <message>
        <source>&amp;Input arguments:</source>
        <translation>E&amp;ingangsargumente:</translation>
    </message>
    <message>
        <source>&amp;Earlier calls:</source>
        <translation>&amp;Frühere Aufrufe:</translation>
    </message>
    <message>
        <source>&amp;Output arguments:</source>
        <translation>A&amp;usgangsargumente:</translation>
    </message>
    <message>
        <source>The method cannot be called now.</source>
        <translation>Die Methode kann jetzt nicht aufgerufen werden.</translation>
    </message>
    <message>
        <source>This user may not call the method.</source>
        <translation>Dieser Benutzer darf die Methode nicht aufrufen.</translation>
    </message>
    <message>
        <source>The arguments cannot be read. %1</source>
        <translation>Die Argumente können nicht gelesen werden. %1</translation>
    </message>
    <message>
        <source>This method takes no arguments.</source>
        <translation>Diese Methode nimmt keine Argumente.</translation>
    </message>
    <message>
        <source>This method gives nothing back.</source>
        <translation>Diese Methode gibt nichts zurück.</translation>
    </message>
    <message>
        <source>The server&apos;s description of the arguments cannot be read.</source>
        <translation>Die Beschreibung der Argumente vom Server kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Good, no outputs</source>
        <translation>Good, keine Ausgaben</translation>
    </message>
    <message>
        <source>None yet</source>
        <translation>Noch keine</translation>
    </message>
    <message>
        <source>Choose one to fill in its arguments</source>
        <translation>Einen wählen, um seine Argumente einzutragen</translation>
    </message>
    <message>
        <source>There is no connection to the server.</source>
        <translation>Es besteht keine Verbindung zum Server.</translation>
    </message>
    <message>
        <source>Select a method.</source>
        <translation>Wählen Sie eine Methode aus.</translation>
    </message>
    <message>
        <source>Reading the arguments ...</source>
        <translation>Die Argumente werden gelesen ...</translation>
    </message>
    <message>
        <source>Not called: an argument is not valid, see there.</source>
        <translation>Nicht aufgerufen: Ein Argument ist ungültig, siehe dort.</translation>
    </message>
    <message>
        <source>Calling ...</source>
        <translation>Wird aufgerufen ...</translation>
    </message>
    <message>
        <source>Cancelled. Whether the server has carried it out is not known.</source>
        <translation>Abgebrochen. Ob der Server den Aufruf ausgeführt hat, ist nicht bekannt.</translation>
    </message>
</context>
<context>
    <name>QvelCertificateManager</name>
    <message>
        <source>CertificateManager</source>
        <translation>Zertifikatsverwaltung</translation>
    </message>
    <message>
        <source>Certificate Not Found</source>
        <translation>Zertifikat nicht gefunden</translation>
    </message>
    <message>
        <source>The application certificate &apos;%1&apos; does not exist.</source>
        <translation>Das Anwendungszertifikat &apos;%1&apos; gibt es nicht.</translation>
    </message>
    <message>
        <source>Certificates (*.der)</source>
        <translation>Zertifikate (*.der)</translation>
    </message>
    <message>
        <source>Could Not Copy Certificate</source>
        <translation>Zertifikat nicht kopiert</translation>
    </message>
    <message>
        <source>The application certificate could not be copied to &apos;%1&apos;.</source>
        <translation>Das Anwendungszertifikat konnte nicht nach &apos;%1&apos; kopiert werden.</translation>
    </message>
    <message>
        <source>Could not write %1: %2</source>
        <translation>%1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Could not move certificate %1 to the trusted directory</source>
        <translation>Das Zertifikat %1 konnte nicht in den Ordner der vertrauenswürdigen verschoben werden</translation>
    </message>
    <message>
        <source>Could not move certificate %1 to the rejected directory</source>
        <translation>Das Zertifikat %1 konnte nicht in den Ordner der abgelehnten verschoben werden</translation>
    </message>
    <message>
        <source>Delete Trusted Certificate</source>
        <translation>Zertifikat löschen</translation>
    </message>
    <message>
        <source>Do you really want to delete the selected certificate?</source>
        <translation>Soll das ausgewählte Zertifikat wirklich gelöscht werden?</translation>
    </message>
    <message>
        <source>Could not delete certificate %1</source>
        <translation>Das Zertifikat %1 konnte nicht gelöscht werden</translation>
    </message>
</context>
<context>
    <name>QvelCertificateModel</name>
    <message>
        <source>The certificate is not yet valid</source>
        <translation>Das Zertifikat ist noch nicht gültig</translation>
    </message>
    <message>
        <source>The certificate will expire soon</source>
        <translation>Das Zertifikat läuft bald ab</translation>
    </message>
    <message>
        <source>The certificate has expired</source>
        <translation>Das Zertifikat ist abgelaufen</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Valid From</source>
        <translation>Gültig ab</translation>
    </message>
    <message>
        <source>Valid To</source>
        <translation>Gültig bis</translation>
    </message>
    <message>
        <source>Organization</source>
        <translation>Organisation</translation>
    </message>
    <message>
        <source>OrganizationUnit</source>
        <translation>Organisationseinheit</translation>
    </message>
    <message>
        <source>Locality</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Bundesland</translation>
    </message>
    <message>
        <source>Country</source>
        <translation>Land</translation>
    </message>
    <message>
        <source>AppURI</source>
        <translation>Anwendungs-URI</translation>
    </message>
    <message>
        <source>DomainName</source>
        <translation>Domänenname</translation>
    </message>
    <message>
        <source>IP</source>
        <translation>IP</translation>
    </message>
    <message>
        <source>Filename</source>
        <translation>Dateiname</translation>
    </message>
    <message>
        <source>Untrusted</source>
        <translation>Nicht vertrauenswürdig</translation>
    </message>
    <message>
        <source>Trusted</source>
        <translation>Vertrauenswürdig</translation>
    </message>
    <message>
        <source>Own Certificate</source>
        <translation>Eigenes Zertifikat</translation>
    </message>
</context>
<context>
    <name>QvelCertificateView</name>
    <message>
        <source>%1 (itself)</source>
        <translation>%1 (selbst)</translation>
    </message>
    <message>
        <source>%1 to %2 UTC</source>
        <translation>%1 bis %2 UTC</translation>
    </message>
    <message>
        <source>Not yet valid: %1</source>
        <translation>Noch nicht gültig: %1</translation>
    </message>
    <message>
        <source>Expired: %1</source>
        <translation>Abgelaufen: %1</translation>
    </message>
    <message>
        <source>%1 bits</source>
        <translation>%1 Bit</translation>
    </message>
    <message>
        <source>Of an unknown kind</source>
        <translation>Von unbekannter Art</translation>
    </message>
    <message>
        <source>Subject</source>
        <translation>Inhaber</translation>
    </message>
    <message>
        <source>Issuer</source>
        <translation>Aussteller</translation>
    </message>
    <message>
        <source>Validity</source>
        <translation>Gültigkeit</translation>
    </message>
    <message>
        <source>Application URI</source>
        <translation>Anwendungs-URI</translation>
    </message>
    <message>
        <source>Host names</source>
        <translation>Rechnernamen</translation>
    </message>
    <message>
        <source>Key</source>
        <translation>Schlüssel</translation>
    </message>
    <message>
        <source>Signature</source>
        <translation>Signatur</translation>
    </message>
    <message>
        <source>Serial number</source>
        <translation>Seriennummer</translation>
    </message>
    <message>
        <source>Thumbprint (SHA-1)</source>
        <translation>Fingerabdruck (SHA-1)</translation>
    </message>
    <message>
        <source>Thumbprint (SHA-256)</source>
        <translation>Fingerabdruck (SHA-256)</translation>
    </message>
</context>
<context>
    <name>QvelDataViewModel</name>
    <message>
        <source>Nothing was sent.</source>
        <translation>Es wurde nichts gesendet.</translation>
    </message>
    <message>
        <source>Writing...</source>
        <translation>Wird geschrieben ...</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation>NodeId</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Data type</source>
        <translation>Datentyp</translation>
    </message>
    <message>
        <source>Source time (UTC)</source>
        <translation>Quellzeit (UTC)</translation>
    </message>
    <message>
        <source>When the source took the value; the date is left out where it is today</source>
        <translation>Wann die Quelle den Wert erfasst hat; ohne Datum, wenn es heute war</translation>
    </message>
    <message>
        <source>Server time (UTC)</source>
        <translation>Serverzeit (UTC)</translation>
    </message>
    <message>
        <source>When the server got the value; the date is left out where it is today</source>
        <translation>Wann der Server den Wert bekommen hat; ohne Datum, wenn es heute war</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Sampling</source>
        <translation>Abtastung</translation>
    </message>
    <message>
        <source>Milliseconds between two looks of the server at the variable; -1 for the publishing interval, 0 for as fast as it can</source>
        <translation>Millisekunden zwischen zwei Abtastungen der Variablen durch den Server; -1 für das Publishing-Intervall, 0 für so schnell wie möglich</translation>
    </message>
    <message>
        <source>Revised sampling</source>
        <translation>Gewährte Abtastung</translation>
    </message>
    <message>
        <source>The sampling interval that the server keeps</source>
        <translation>Das Abtastintervall, das der Server einhält</translation>
    </message>
    <message>
        <source>Publishing</source>
        <translation>Publishing</translation>
    </message>
    <message>
        <source>Milliseconds between two notifications</source>
        <translation>Millisekunden zwischen zwei Benachrichtigungen</translation>
    </message>
    <message>
        <source>Revised publishing</source>
        <translation>Gewährtes Publishing</translation>
    </message>
    <message>
        <source>The publishing interval that the server keeps</source>
        <translation>Das Publishing-Intervall, das der Server einhält</translation>
    </message>
    <message>
        <source>Queue size</source>
        <translation>Queue-Größe</translation>
    </message>
    <message>
        <source>Values that the server keeps for a notification</source>
        <translation>Werte, die der Server für eine Benachrichtigung aufhebt</translation>
    </message>
    <message>
        <source>Revised queue</source>
        <translation>Gewährte Queue</translation>
    </message>
    <message>
        <source>The queue size that the server has</source>
        <translation>Die Queue-Größe, die der Server hat</translation>
    </message>
    <message>
        <source>Overflows</source>
        <translation>Überläufe</translation>
    </message>
    <message>
        <source>How often the server dropped values because its queue was too short</source>
        <translation>Wie oft der Server Werte verworfen hat, weil seine Queue zu kurz war</translation>
    </message>
    <message>
        <source>Gaps</source>
        <translation>Lücken</translation>
    </message>
    <message>
        <source>How often notifications were lost, such as with the connection</source>
        <translation>Wie oft Benachrichtigungen verloren gingen, etwa mit der Verbindung</translation>
    </message>
    <message>
        <source>Last write</source>
        <translation>Letztes Schreiben</translation>
    </message>
    <message>
        <source>The server&apos;s answer to the last value written</source>
        <translation>Die Antwort des Servers auf den zuletzt geschriebenen Wert</translation>
    </message>
    <message>
        <source>%1 nodes were not added: a list holds %2.</source>
        <translation>%1 Knoten wurden nicht hinzugefügt: Eine Liste fasst %2.</translation>
    </message>
    <message>
        <source>This is in the list already.</source>
        <translation>Das steht schon in der Liste.</translation>
    </message>
    <message>
        <source>The disk does not keep up with the values</source>
        <translation>Das Laufwerk kommt mit den Werten nicht mit</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no sampling.</source>
        <translation>„%1“ ist kein Abtastintervall.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no publishing.</source>
        <translation>„%1“ ist kein Publishing-Intervall.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no queue size.</source>
        <translation>„%1“ ist keine Queue-Größe.</translation>
    </message>
</context>
<context>
    <name>QvelDataViewWidget</name>
    <message>
        <source>NodeId, such as nsu=urn:plant;s=Pump</source>
        <translation>NodeId, etwa nsu=urn:plant;s=Pump</translation>
    </message>
    <message>
        <source>NodeId of a variable to add</source>
        <translation>NodeId einer Variablen, die hinzukommt</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Add this variable to the list</source>
        <translation>Diese Variable zur Liste hinzufügen</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Let what is shown stand still; a recording goes on</source>
        <translation>Die Anzeige anhalten; eine Aufzeichnung läuft weiter</translation>
    </message>
    <message>
        <source>Record...</source>
        <translation>Aufzeichnen...</translation>
    </message>
    <message>
        <source>Write each value to a CSV file as it comes</source>
        <translation>Jeden Wert bei seiner Ankunft in eine CSV-Datei schreiben</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected rows from the list (Del)</source>
        <translation>Die ausgewählten Zeilen aus der Liste entfernen (Entf)</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Lists</source>
        <translation>Listen</translation>
    </message>
    <message>
        <source>New list</source>
        <translation>Neue Liste</translation>
    </message>
    <message>
        <source>List %1</source>
        <translation>Liste %1</translation>
    </message>
    <message>
        <source>Values of %1</source>
        <translation>Werte von %1</translation>
    </message>
    <message>
        <source>Name of the list</source>
        <translation>Name der Liste</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no NodeId. Examples: i=2258, ns=2;s=Pump, nsu=urn:plant;s=Pump</source>
        <translation>„%1“ ist keine NodeId. Beispiele: i=2258, ns=2;s=Pump, nsu=urn:plant;s=Pump</translation>
    </message>
    <message>
        <source>Record to a CSV file</source>
        <translation>In eine CSV-Datei aufzeichnen</translation>
    </message>
    <message>
        <source>CSV files (*.csv)</source>
        <translation>CSV-Dateien (*.csv)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Recording stopped: %1. %2 lines are in %3</source>
        <translation>Aufzeichnung beendet: %1. %2 Zeilen sind in %3</translation>
    </message>
    <message>
        <source>Recording: %1 lines in %2</source>
        <translation>Aufzeichnung läuft: %1 Zeilen in %2</translation>
    </message>
    <message>
        <source>Recorded: %1 lines in %2</source>
        <translation>Aufgezeichnet: %1 Zeilen in %2</translation>
    </message>
    <message>
        <source>Stop recording</source>
        <translation>Aufzeichnung beenden</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Reopen closed list</source>
        <translation>Geschlossene Liste wieder öffnen</translation>
    </message>
    <message>
        <source>There are %1 lists, and no room for more.</source>
        <translation>Es gibt %1 Listen, und keinen Platz für weitere.</translation>
    </message>
    <message>
        <source>The stored lists cannot be read; they are kept.</source>
        <translation>Die gespeicherten Listen können nicht gelesen werden; sie bleiben erhalten.</translation>
    </message>
    <message>
        <source>Columns</source>
        <translation>Spalten</translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetArray</name>
    <message>
        <source>Append element</source>
        <translation>Element anfügen</translation>
    </message>
    <message>
        <source>Remove last element</source>
        <translation>Letztes Element entfernen</translation>
    </message>
    <message>
        <source>Writing values of this type
is currently not supported.</source>
        <translation>Werte dieses Typs können
derzeit nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Array</source>
        <translation>Array</translation>
    </message>
    <message>
        <source>There is not enough memory to change the array.</source>
        <translation>Der Speicher reicht nicht aus, um das Array zu ändern.</translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetBase</name>
    <message>
        <source>Write</source>
        <translation>Schreiben</translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetExpandedNodeId</name>
    <message>
        <source>Numeric</source>
        <translation>Numeric</translation>
    </message>
    <message>
        <source>String</source>
        <translation>String</translation>
    </message>
    <message>
        <source>Guid</source>
        <translation>Guid</translation>
    </message>
    <message>
        <source>Opaque</source>
        <translation>Opaque</translation>
    </message>
    <message>
        <source>NamespaceUri:</source>
        <translation>NamespaceUri:</translation>
    </message>
    <message>
        <source>ServerIndex:</source>
        <translation>ServerIndex:</translation>
    </message>
    <message>
        <source>NsIndex:</source>
        <translation>NsIndex:</translation>
    </message>
    <message>
        <source>IdentifierType:</source>
        <translation>IdentifierType:</translation>
    </message>
    <message>
        <source>Identifier:</source>
        <translation>Identifier:</translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetMatrix</name>
    <message>
        <source>Set Dimensions</source>
        <translation>Dimensionen festlegen</translation>
    </message>
    <message>
        <source>Writing values of this type
is currently not supported.</source>
        <translation>Werte dieses Typs können
derzeit nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Set Matrix Dimensions</source>
        <translation>Dimensionen der Matrix festlegen</translation>
    </message>
    <message>
        <source>Enter a comma separated list of dimensions (e.g. &apos;2,4,6&apos;):</source>
        <translation>Dimensionen, durch Kommas getrennt (z. B. &apos;2,4,6&apos;):</translation>
    </message>
    <message>
        <source>Format Error</source>
        <translation>Formatfehler</translation>
    </message>
    <message>
        <source>The list of dimensions entered was not valid.</source>
        <translation>Die eingegebenen Dimensionen sind ungültig.</translation>
    </message>
    <message>
        <source>The matrix would have too many elements, or there is not enough memory for it. It was not changed.</source>
        <translation>Die Matrix hätte zu viele Elemente, oder der Speicher reicht nicht aus. Sie wurde nicht geändert.</translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetNodeId</name>
    <message>
        <source>Numeric</source>
        <translation>Numeric</translation>
    </message>
    <message>
        <source>String</source>
        <translation>String</translation>
    </message>
    <message>
        <source>Guid</source>
        <translation>Guid</translation>
    </message>
    <message>
        <source>Opaque</source>
        <translation>Opaque</translation>
    </message>
    <message>
        <source>NsIndex:</source>
        <translation>NsIndex:</translation>
    </message>
    <message>
        <source>IdentifierType:</source>
        <translation>IdentifierType:</translation>
    </message>
    <message>
        <source>Identifier:</source>
        <translation>Identifier:</translation>
    </message>
</context>
<context>
    <name>QvelDiscoveryJob</name>
    <message>
        <source>%1 is no URL of the form opc.tcp://host:port.</source>
        <translation>%1 ist keine URL der Form opc.tcp://Rechner:Port.</translation>
    </message>
    <message>
        <source>No computer answers at %1. Check the name, and the network.</source>
        <translation>Unter %1 antwortet kein Rechner. Prüfen Sie den Namen und das Netzwerk.</translation>
    </message>
    <message>
        <source>No server listens at %1. Check that it runs, and its port.</source>
        <translation>Unter %1 ist kein Server erreichbar. Prüfen Sie, ob er läuft, und seinen Port.</translation>
    </message>
    <message>
        <source>The server at %1 closed the connection.</source>
        <translation>Der Server unter %1 hat die Verbindung geschlossen.</translation>
    </message>
    <message>
        <source>%1 did not answer in time. Check that the server can be reached and is not overloaded.</source>
        <translation>%1 hat nicht rechtzeitig geantwortet. Prüfen Sie, ob der Server erreichbar und nicht überlastet ist.</translation>
    </message>
    <message>
        <source>Discovery FindServers on %1 failed (%2)</source>
        <translation>FindServers auf %1 ist fehlgeschlagen (%2)</translation>
    </message>
    <message>
        <source>Discovery GetEndpoints on %1 failed (%2)</source>
        <translation>GetEndpoints auf %1 ist fehlgeschlagen (%2)</translation>
    </message>
    <message>
        <source>The network cannot be searched: the service for that, Avahi, does not run on this computer.</source>
        <translation>Das Netzwerk kann nicht durchsucht werden: Der Dienst dafür, Avahi, läuft auf diesem Rechner nicht.</translation>
    </message>
    <message>
        <source>The network could not be searched (%1).</source>
        <translation>Das Netzwerk konnte nicht durchsucht werden (%1).</translation>
    </message>
    <message>
        <source>opc.tcp://%1</source>
        <translation>opc.tcp://%1</translation>
    </message>
    <message>
        <source>%1</source>
        <translation>%1</translation>
    </message>
    <message>
        <source>CoInitializeEx failed (0x%1)</source>
        <translation>CoInitializeEx ist fehlgeschlagen (0x%1)</translation>
    </message>
    <message>
        <source>CoCreateInstanceEx failed (0x%1)</source>
        <translation>CoCreateInstanceEx ist fehlgeschlagen (0x%1)</translation>
    </message>
    <message>
        <source>EnumClassesOfCategories failed (0x%1)</source>
        <translation>EnumClassesOfCategories ist fehlgeschlagen (0x%1)</translation>
    </message>
    <message>
        <source>GetClassDetails failed (0x%1)</source>
        <translation>GetClassDetails ist fehlgeschlagen (0x%1)</translation>
    </message>
    <message>
        <source>The OPC Classic servers of %1 cannot be listed (0x%2).</source>
        <translation>Die OPC-Classic-Server von %1 können nicht aufgelistet werden (0x%2).</translation>
    </message>
    <message>
        <source>/</source>
        <translation>/</translation>
    </message>
    <message>
        <source>%1 does not tell its endpoints (%2).</source>
        <translation>%1 nennt seine Endpunkte nicht (%2).</translation>
    </message>
    <message>
        <source>The OPC Classic servers of this computer cannot be listed (0x%1).</source>
        <translation>Die OPC-Classic-Server dieses Rechners können nicht aufgelistet werden (0x%1).</translation>
    </message>
</context>
<context>
    <name>QvelDiscoveryModel</name>
    <message>
        <source>Local</source>
        <translation>Lokal</translation>
    </message>
    <message>
        <source>Local Network</source>
        <translation>Lokales Netzwerk</translation>
    </message>
    <message>
        <source>Custom Discovery</source>
        <translation>Eigene Discovery-Server</translation>
    </message>
    <message>
        <source>Custom Enum</source>
        <translation>Eigene Rechner</translation>
    </message>
    <message>
        <source>Recently Used</source>
        <translation>Zuletzt verwendet</translation>
    </message>
    <message>
        <source>Item</source>
        <translation>Eintrag</translation>
    </message>
    <message>
        <source>Configuration already existing</source>
        <translation>Konfiguration bereits vorhanden</translation>
    </message>
    <message>
        <source>The &apos;Recently Used&apos; list already contains a server configuration with this name that differs from the current one. Do you want to overwrite it?</source>
        <translation>Die Liste &apos;Zuletzt verwendet&apos; enthält bereits eine Serverkonfiguration dieses Namens, die von der aktuellen abweicht. Soll sie überschrieben werden?</translation>
    </message>
    <message>
        <source>The settings hold more servers than can be read. They are left as they are.</source>
        <translation>In den Einstellungen stehen mehr Server, als gelesen werden können. Sie bleiben, wie sie sind.</translation>
    </message>
</context>
<context>
    <name>QvelDiscoveryWidget</name>
    <message>
        <source>Only a URL that begins with &quot;%1&quot; is added.</source>
        <translation>Nur eine URL, die mit &quot;%1&quot; beginnt, wird hinzugefügt.</translation>
    </message>
    <message>
        <source>Rebrowse</source>
        <translation>Erneut durchsuchen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Edit Discovery URL</source>
        <translation>Discovery-URL bearbeiten</translation>
    </message>
    <message>
        <source>Edit Discovery Url</source>
        <translation>Discovery-URL bearbeiten</translation>
    </message>
    <message>
        <source>Enter the new Discovery Url:</source>
        <translation>Die neue Discovery-URL:</translation>
    </message>
    <message>
        <source>Enter Url</source>
        <translation>URL eingeben</translation>
    </message>
    <message>
        <source>Enter the Url of a computer with discovery service running:</source>
        <translation>URL eines Rechners, auf dem ein Discovery-Dienst läuft:</translation>
    </message>
    <message>
        <source>Servers</source>
        <translation>Server</translation>
    </message>
</context>
<context>
    <name>QvelDisplayDialog</name>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>Schreiben</translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetArray</name>
    <message>
        <source>This array type cannot be displayed</source>
        <translation>Dieser Arraytyp kann nicht angezeigt werden</translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetBase</name>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Edit value</source>
        <translation>Wert bearbeiten</translation>
    </message>
    <message>
        <source>The value is too long to be shown here, where texts of up to %1 characters are. It stays as it is.</source>
        <translation>Der Wert ist zu lang, um hier angezeigt zu werden; möglich sind bis zu %1 Zeichen. Er bleibt, wie er ist.</translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetByteString</name>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Load</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>Click again to enter value manually</source>
        <translation>Erneut klicken, um den Wert von Hand einzugeben</translation>
    </message>
    <message>
        <source>Conversion Error</source>
        <translation>Umwandlungsfehler</translation>
    </message>
    <message>
        <source>The ByteString entered was not valid!</source>
        <translation>Der eingegebene ByteString ist ungültig!</translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetMatrix</name>
    <message>
        <source>This matrix type cannot be displayed</source>
        <translation>Dieser Matrixtyp kann nicht angezeigt werden</translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetString</name>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Load</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>Click again to enter value manually</source>
        <translation>Erneut klicken, um den Wert von Hand einzugeben</translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetXmlElement</name>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Load</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>Click again to enter value manually</source>
        <translation>Erneut klicken, um den Wert von Hand einzugeben</translation>
    </message>
</context>
<context>
    <name>QvelEndpointSettingsWidget</name>
    <message>
        <source>Open Server Certificate</source>
        <translation>Serverzertifikat öffnen</translation>
    </message>
    <message>
        <source>Certificate (*.der *.pem)</source>
        <translation>Zertifikat (*.der *.pem)</translation>
    </message>
    <message>
        <source>Open Private Key</source>
        <translation>Privaten Schlüssel öffnen</translation>
    </message>
    <message>
        <source>Private Key (*.pem)</source>
        <translation>Privater Schlüssel (*.pem)</translation>
    </message>
</context>
<context>
    <name>QvelNewCertificateDlg</name>
    <message>
        <source>Not required</source>
        <translation>Nicht erforderlich</translation>
    </message>
    <message>
        <source>Present and valid</source>
        <translation>Vorhanden und gültig</translation>
    </message>
    <message>
        <source>Missing or invalid</source>
        <translation>Fehlt oder ist ungültig</translation>
    </message>
    <message>
        <source>Two letters from A to Z.</source>
        <translation>Zwei Buchstaben von A bis Z.</translation>
    </message>
    <message>
        <source>Letters, digits and - . _ * only, with a comma between two names.</source>
        <translation>Nur Buchstaben, Ziffern und - . _ *, mit einem Komma zwischen zwei Namen.</translation>
    </message>
    <message>
        <source>IPv4 or IPv6 addresses in full, with a comma between two of them.</source>
        <translation>Vollständige IPv4- oder IPv6-Adressen, mit einem Komma zwischen zweien.</translation>
    </message>
    <message>
        <source>At most %1 characters.</source>
        <translation>Höchstens %1 Zeichen.</translation>
    </message>
    <message>
        <source>Could not create a certificate from these data</source>
        <translation>Aus diesen Angaben konnte kein Zertifikat erstellt werden</translation>
    </message>
</context>
<context>
    <name>QvelReferencesModel</name>
    <message>
        <source>%1 (inverse)</source>
        <translation>%1 (invers)</translation>
    </message>
    <message>
        <source>From this node</source>
        <translation>Von diesem Knoten aus</translation>
    </message>
    <message>
        <source>To this node</source>
        <translation>Zu diesem Knoten hin</translation>
    </message>
    <message>
        <source>Reference</source>
        <translation>Referenz</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>Ziel</translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation>NodeId</translation>
    </message>
    <message>
        <source>Class</source>
        <translation>Klasse</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
</context>
<context>
    <name>QvelReferencesWidget</name>
    <message>
        <source>References</source>
        <translation>Referenzen</translation>
    </message>
    <message>
        <source>Copy NodeId</source>
        <translation>NodeId kopieren</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Select a node to see its references.</source>
        <translation>Wählen Sie einen Knoten aus, um seine Referenzen zu sehen.</translation>
    </message>
</context>
<context>
    <name>QvelSession</name>
    <message>
        <source>Subscription %1 is lost, and made anew</source>
        <translation>Subscription %1 ist verloren und wird neu angelegt</translation>
    </message>
    <message>
        <source>Subscription %1: %2 messages are missing after number %3</source>
        <translation>Subscription %1: Nach Nummer %3 fehlen %2 Nachrichten</translation>
    </message>
    <message>
        <source>Look into the server&apos;s log.</source>
        <translation>Sehen Sie in das Protokoll des Servers.</translation>
    </message>
    <message>
        <source>Looking up the host</source>
        <translation>Suche des Rechners</translation>
    </message>
    <message>
        <source>Connecting</source>
        <translation>Verbindungsaufbau</translation>
    </message>
    <message>
        <source>Opening the secure channel</source>
        <translation>Öffnen des sicheren Kanals</translation>
    </message>
    <message>
        <source>Creating the session</source>
        <translation>Erzeugen der Sitzung</translation>
    </message>
    <message>
        <source>Activating the session</source>
        <translation>Aktivieren der Sitzung</translation>
    </message>
    <message>
        <source>Being connected</source>
        <translation>Halten der Verbindung</translation>
    </message>
    <message>
        <source>Preparing the connection</source>
        <translation>Vorbereiten der Verbindung</translation>
    </message>
    <message>
        <source>The server&apos;s random number is too short, or too long.</source>
        <translation>Die Zufallszahl des Servers ist zu kurz oder zu lang.</translation>
    </message>
    <message>
        <source>Answer the question in time.</source>
        <translation>Beantworten Sie die Frage rechtzeitig.</translation>
    </message>
    <message>
        <source>Preparing the identity</source>
        <translation>Vorbereiten der Anmeldung</translation>
    </message>
    <message>
        <source>The server offers no endpoint with this security: choose another policy or mode.</source>
        <translation>Der Server bietet keinen Endpunkt mit dieser Sicherheit an: Wählen Sie eine andere Richtlinie oder einen anderen Modus.</translation>
    </message>
    <message>
        <source>Make a certificate for this application: %1 holds none.</source>
        <translation>Erzeugen Sie ein Zertifikat für diese Anwendung: %1 enthält keines.</translation>
    </message>
    <message>
        <source>The private key of this application, %1, cannot be read.</source>
        <translation>Der private Schlüssel dieser Anwendung, %1, kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Certificate and private key of this application do not match: make both anew.</source>
        <translation>Zertifikat und privater Schlüssel dieser Anwendung passen nicht zusammen: Erzeugen Sie beide neu.</translation>
    </message>
    <message>
        <source>%1 holds no certificate of the user.</source>
        <translation>%1 enthält kein Zertifikat des Benutzers.</translation>
    </message>
    <message>
        <source>The user&apos;s private key, %1, cannot be read.</source>
        <translation>Der private Schlüssel des Benutzers, %1, kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>The user&apos;s certificate and private key do not match.</source>
        <translation>Zertifikat und privater Schlüssel des Benutzers passen nicht zusammen.</translation>
    </message>
    <message>
        <source>Give the password of the private key.</source>
        <translation>Geben Sie das Kennwort des privaten Schlüssels an.</translation>
    </message>
    <message>
        <source>Checking the server&apos;s certificate</source>
        <translation>Prüfen des Serverzertifikats</translation>
    </message>
    <message>
        <source>The policy takes RSA keys of %1 to %2 bits; the server&apos;s has %3, this application&apos;s %4.</source>
        <translation>Die Richtlinie erlaubt RSA-Schlüssel von %1 bis %2 Bit; der des Servers hat %3, der dieser Anwendung %4.</translation>
    </message>
    <message>
        <source>The rejected certificate cannot be filed: %1</source>
        <translation>Das abgelehnte Zertifikat kann nicht abgelegt werden: %1</translation>
    </message>
    <message>
        <source>Trust the server&apos;s certificate, if it is the right one.</source>
        <translation>Vertrauen Sie dem Zertifikat des Servers, wenn es das richtige ist.</translation>
    </message>
    <message>
        <source>The trusted certificate cannot be filed: %1</source>
        <translation>Das vertrauenswürdige Zertifikat kann nicht abgelegt werden: %1</translation>
    </message>
    <message>
        <source>The server gave no session.</source>
        <translation>Der Server hat keine Sitzung gegeben.</translation>
    </message>
    <message>
        <source>The session&apos;s certificate is not the one that the endpoint announced: someone may be in between.</source>
        <translation>Das Zertifikat der Sitzung ist nicht das, welches der Endpunkt angekündigt hat: Vielleicht ist jemand dazwischen.</translation>
    </message>
    <message>
        <source>The server&apos;s signature is wrong: someone may be in between.</source>
        <translation>Die Signatur des Servers ist falsch: Vielleicht ist jemand dazwischen.</translation>
    </message>
    <message>
        <source>The server&apos;s endpoints are not those that it announced: someone may be in between. Ask for them again.</source>
        <translation>Die Endpunkte des Servers sind nicht die angekündigten: Vielleicht ist jemand dazwischen. Fragen Sie sie erneut ab.</translation>
    </message>
    <message>
        <source>The endpoint does not take this kind of identity.</source>
        <translation>Der Endpunkt nimmt diese Anmeldeart nicht an.</translation>
    </message>
    <message>
        <source>The identity&apos;s security policy is not supported.</source>
        <translation>Die Sicherheitsrichtlinie der Anmeldung wird nicht unterstützt.</translation>
    </message>
    <message>
        <source>The endpoint takes a user&apos;s certificate without security, which proves nothing: choose a secure one.</source>
        <translation>Der Endpunkt nimmt das Zertifikat eines Benutzers ohne Sicherheit an, was nichts beweist: Wählen Sie einen sicheren.</translation>
    </message>
    <message>
        <source>The password would travel in clear text: choose an endpoint that encrypts, or allow it explicitly.</source>
        <translation>Das Kennwort würde im Klartext übertragen: Wählen Sie einen Endpunkt, der verschlüsselt, oder erlauben Sie es ausdrücklich.</translation>
    </message>
    <message>
        <source>The server gives no certificate to encrypt the password with.</source>
        <translation>Der Server gibt kein Zertifikat, mit dem das Kennwort verschlüsselt werden könnte.</translation>
    </message>
    <message>
        <source>Give a URL of the form opc.tcp://host:port.</source>
        <translation>Geben Sie eine URL der Form opc.tcp://host:port an.</translation>
    </message>
    <message>
        <source>Check the host&apos;s name and the network.</source>
        <translation>Prüfen Sie den Rechnernamen und das Netzwerk.</translation>
    </message>
    <message>
        <source>Check that the server runs, and its port.</source>
        <translation>Prüfen Sie, ob der Server läuft, und seinen Port.</translation>
    </message>
    <message>
        <source>The server closed the connection: look into its log. It may not trust this application&apos;s certificate.</source>
        <translation>Der Server hat die Verbindung geschlossen: Sehen Sie in sein Protokoll. Vielleicht vertraut er dem Zertifikat dieser Anwendung nicht.</translation>
    </message>
    <message>
        <source>Check that the server can be reached and is not overloaded, or allow it more time.</source>
        <translation>Prüfen Sie, ob der Server erreichbar und nicht überlastet ist, oder lassen Sie ihm mehr Zeit.</translation>
    </message>
    <message>
        <source>The server may not trust this application&apos;s certificate: trust it there, and connect again.</source>
        <translation>Vielleicht vertraut der Server dem Zertifikat dieser Anwendung nicht: Vertrauen Sie ihm dort, und verbinden Sie sich erneut.</translation>
    </message>
    <message>
        <source>Choose another security policy.</source>
        <translation>Wählen Sie eine andere Sicherheitsrichtlinie.</translation>
    </message>
    <message>
        <source>Choose another message security mode.</source>
        <translation>Wählen Sie einen anderen Sicherheitsmodus.</translation>
    </message>
    <message>
        <source>Trust the certificate, there where it was refused.</source>
        <translation>Vertrauen Sie dem Zertifikat dort, wo es abgelehnt wurde.</translation>
    </message>
    <message>
        <source>Check user name and password, or the user&apos;s certificate.</source>
        <translation>Prüfen Sie Benutzername und Kennwort oder das Zertifikat des Benutzers.</translation>
    </message>
    <message>
        <source>Choose an identity that the server offers.</source>
        <translation>Wählen Sie eine Anmeldeart, die der Server anbietet.</translation>
    </message>
    <message>
        <source>Check user name and password, and what the user may do.</source>
        <translation>Prüfen Sie Benutzername und Kennwort, und was der Benutzer darf.</translation>
    </message>
    <message>
        <source>Close another session of the server, or wait until one ends.</source>
        <translation>Schließen Sie eine andere Sitzung des Servers, oder warten Sie, bis eine endet.</translation>
    </message>
</context>
<context>
    <name>QvelSessionWidget</name>
    <message>
        <source>Disconnected</source>
        <translation>Getrennt</translation>
    </message>
    <message>
        <source>Looking up the host</source>
        <translation>Rechner wird gesucht</translation>
    </message>
    <message>
        <source>Connecting</source>
        <translation>Verbindung wird aufgebaut</translation>
    </message>
    <message>
        <source>Opening the secure channel</source>
        <translation>Sicherer Kanal wird geöffnet</translation>
    </message>
    <message>
        <source>Creating the session</source>
        <translation>Sitzung wird erzeugt</translation>
    </message>
    <message>
        <source>Activating the session</source>
        <translation>Sitzung wird aktiviert</translation>
    </message>
    <message>
        <source>Connected</source>
        <translation>Verbunden</translation>
    </message>
    <message>
        <source>Waiting to reconnect</source>
        <translation>Warten auf neue Verbindung</translation>
    </message>
    <message>
        <source>%1 (announced as %2)</source>
        <translation>%1 (angekündigt als %2)</translation>
    </message>
    <message>
        <source>The best that is offered</source>
        <translation>Die beste, die angeboten wird</translation>
    </message>
    <message>
        <source>Certificate %1</source>
        <translation>Zertifikat %1</translation>
    </message>
    <message>
        <source>Anonymous</source>
        <translation>Anonym</translation>
    </message>
    <message>
        <source>None yet</source>
        <translation>Noch keine</translation>
    </message>
    <message>
        <source>%1 s ago</source>
        <translation>Vor %1 s</translation>
    </message>
    <message>
        <source>%1 sent, %2 received</source>
        <translation>%1 gesendet, %2 empfangen</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>URL</source>
        <translation>URL</translation>
    </message>
    <message>
        <source>Security</source>
        <translation>Sicherheit</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Benutzer</translation>
    </message>
    <message>
        <source>Session name</source>
        <translation>Sitzungsname</translation>
    </message>
    <message>
        <source>Last answer</source>
        <translation>Letzte Antwort</translation>
    </message>
    <message>
        <source>Requests</source>
        <translation>Anfragen</translation>
    </message>
    <message>
        <source>Bytes</source>
        <translation>Bytes</translation>
    </message>
    <message>
        <source>Renewals of the channel</source>
        <translation>Erneuerungen des Kanals</translation>
    </message>
    <message>
        <source>Reconnects</source>
        <translation>Neue Verbindungen</translation>
    </message>
    <message>
        <source>%1 failed: %2</source>
        <translation>%1 ist fehlgeschlagen: %2</translation>
    </message>
    <message>
        <source>The server says: %1</source>
        <translation>Der Server sagt: %1</translation>
    </message>
    <message>
        <source>No session</source>
        <translation>Keine Sitzung</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>A&amp;bbrechen</translation>
    </message>
    <message>
        <source>&amp;Disconnect</source>
        <translation>&amp;Trennen</translation>
    </message>
    <message>
        <source>&amp;Reconnect Now</source>
        <translation>Jetzt &amp;neu verbinden</translation>
    </message>
    <message>
        <source>&amp;Reconnect</source>
        <translation>&amp;Neu verbinden</translation>
    </message>
    <message>
        <source>Session</source>
        <translation>Sitzung</translation>
    </message>
    <message>
        <source>Steps of the connection</source>
        <translation>Schritte der Verbindung</translation>
    </message>
    <message>
        <source>Last error</source>
        <translation>Letzter Fehler</translation>
    </message>
</context>
<context>
    <name>QvelToolBox</name>
    <message>
        <source>Page_%1</source>
        <translation>Seite_%1</translation>
    </message>
</context>
<context>
    <name>QvelToolBoxPage</name>
    <message>
        <source>Show or hide this page</source>
        <translation>Diese Seite auf- oder zuklappen</translation>
    </message>
</context>
<context>
    <name>QvelTrendWidget</name>
    <message>
        <source>There is no memory for the picture.</source>
        <translation>Für das Bild ist kein Speicher da.</translation>
    </message>
    <message>
        <source>Trend</source>
        <translation>Trend</translation>
    </message>
    <message>
        <source>Exported to %1</source>
        <translation>Exportiert nach %1</translation>
    </message>
    <message>
        <source>Not exported to %1: %2</source>
        <translation>Nicht nach %1 exportiert: %2</translation>
    </message>
    <message>
        <source>Exporting to %1 ...</source>
        <translation>Export nach %1 läuft ...</translation>
    </message>
    <message>
        <source>This trend was saved by a later version.</source>
        <translation>Dieser Trend wurde von einer neueren Version gespeichert.</translation>
    </message>
    <message>
        <source>This is no saved trend.</source>
        <translation>Das ist kein gespeicherter Trend.</translation>
    </message>
    <message>
        <source>Not restored: %1</source>
        <translation>Nicht wiederhergestellt: %1</translation>
    </message>
    <message>
        <source>&amp;Live	End</source>
        <translation>&amp;Live	Ende</translation>
    </message>
    <message>
        <source>Show &amp;everything	0</source>
        <translation>&amp;Alles zeigen	0</translation>
    </message>
    <message>
        <source>Zoom &amp;in	+</source>
        <translation>Ver&amp;größern	+</translation>
    </message>
    <message>
        <source>Zoom &amp;out	-</source>
        <translation>Verkle&amp;inern	-</translation>
    </message>
    <message>
        <source>&amp;Reset scales</source>
        <translation>Skalen &amp;zurücksetzen</translation>
    </message>
    <message>
        <source>Load &amp;history of this range</source>
        <translation>&amp;Historie dieses Bereichs laden</translation>
    </message>
    <message>
        <source>&amp;Series</source>
        <translation>&amp;Kurven</translation>
    </message>
    <message>
        <source>&amp;Visible</source>
        <translation>&amp;Sichtbar</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>Export as &amp;PNG...</source>
        <translation>Als &amp;PNG exportieren...</translation>
    </message>
    <message>
        <source>Export as PNG</source>
        <translation>Als PNG exportieren</translation>
    </message>
    <message>
        <source>Pictures (*.png)</source>
        <translation>Bilder (*.png)</translation>
    </message>
    <message>
        <source>Export as S&amp;VG...</source>
        <translation>Als S&amp;VG exportieren...</translation>
    </message>
    <message>
        <source>Export as SVG</source>
        <translation>Als SVG exportieren</translation>
    </message>
    <message>
        <source>Drawings (*.svg)</source>
        <translation>Zeichnungen (*.svg)</translation>
    </message>
    <message>
        <source>Export values as &amp;CSV...</source>
        <translation>Werte als &amp;CSV exportieren...</translation>
    </message>
    <message>
        <source>Export values as CSV</source>
        <translation>Werte als CSV exportieren</translation>
    </message>
    <message>
        <source>Tables (*.csv)</source>
        <translation>Tabellen (*.csv)</translation>
    </message>
    <message>
        <source>%1 d</source>
        <translation>%1 d</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 h</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <source>A trend takes %1 series.</source>
        <translation>Ein Trend fasst %1 Kurven.</translation>
    </message>
    <message>
        <source>false</source>
        <translation>false</translation>
    </message>
    <message>
        <source>true</source>
        <translation>true</translation>
    </message>
    <message>
        <source>not connected</source>
        <translation>nicht verbunden</translation>
    </message>
    <message>
        <source>The oldest values were dropped: %1 are kept.</source>
        <translation>Die ältesten Werte wurden verworfen: %1 werden behalten.</translation>
    </message>
    <message>
        <source>Live, %1</source>
        <translation>Live, %1</translation>
    </message>
    <message>
        <source>Paused (End: live)</source>
        <translation>Angehalten (Ende: live)</translation>
    </message>
    <message>
        <source>Drop variables here, or paste them.</source>
        <translation>Ziehen Sie Variablen hierher, oder fügen Sie sie ein.</translation>
    </message>
    <message>
        <source>Value: %1</source>
        <translation>Wert: %1</translation>
    </message>
    <message>
        <source>Status: %1</source>
        <translation>Status: %1</translation>
    </message>
    <message>
        <source>Time: %1</source>
        <translation>Zeit: %1</translation>
    </message>
    <message>
        <source>%1 points</source>
        <translation>%1 Punkte</translation>
    </message>
    <message>
        <source>The history could not be read: %1</source>
        <translation>Die Historie konnte nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>%1 values came from the history.</source>
        <translation>%1 Werte kamen aus der Historie.</translation>
    </message>
    <message>
        <source>%1 series: %2 values came from the history.</source>
        <translation>%1 Kurven: %2 Werte kamen aus der Historie.</translation>
    </message>
    <message>
        <source>Reading the history ...</source>
        <translation>Die Historie wird gelesen ...</translation>
    </message>
    <message>
        <source>no value</source>
        <translation>kein Wert</translation>
    </message>
    <message>
        <source>%1 (not drawn)</source>
        <translation>%1 (nicht gezeichnet)</translation>
    </message>
    <message>
        <source>%1 more</source>
        <translation>%1 weitere</translation>
    </message>
</context>
<context>
    <name>QvelTrustDialog</name>
    <message>
        <source>Trust the Server?</source>
        <translation>Dem Server vertrauen?</translation>
    </message>
    <message>
        <source>The server&apos;s certificate is not trusted.</source>
        <translation>Dem Zertifikat des Servers wird nicht vertraut.</translation>
    </message>
    <message>
        <source>What was found</source>
        <translation>Was festgestellt wurde</translation>
    </message>
    <message>
        <source>The certificate</source>
        <translation>Das Zertifikat</translation>
    </message>
    <message>
        <source>Compare the thumbprint with the one that the server itself shows. &quot;Always Trust&quot; files the certificate among the trusted ones.</source>
        <translation>Vergleichen Sie den Fingerabdruck mit dem, den der Server selbst anzeigt. &quot;Immer vertrauen&quot; legt das Zertifikat bei den vertrauenswürdigen ab.</translation>
    </message>
    <message>
        <source>&amp;Copy Details</source>
        <translation>Details &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Always Trust</source>
        <translation>&amp;Immer vertrauen</translation>
    </message>
    <message>
        <source>Trust &amp;Once</source>
        <translation>&amp;Einmal vertrauen</translation>
    </message>
    <message>
        <source>&amp;Reject</source>
        <translation>&amp;Ablehnen</translation>
    </message>
    <message>
        <source>The certificate of the server at %1 is not trusted.</source>
        <translation>Dem Zertifikat des Servers unter %1 wird nicht vertraut.</translation>
    </message>
</context>
<context>
    <name>QvelWidgetBase</name>
    <message>
        <source>The text was cut: this line takes %1 characters.</source>
        <translation>Der Text wurde gekürzt: Diese Zeile fasst %1 Zeichen.</translation>
    </message>
</context>
<context>
    <name>QvelWidgetByteString</name>
    <message>
        <source>Hexadecimal bytes</source>
        <translation>Hexadezimale Bytes</translation>
    </message>
</context>
<context>
    <name>QvelWidgetEnum</name>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>QvelWidgetEnumFlags</name>
    <message>
        <source>Flags</source>
        <translation>Flags</translation>
    </message>
</context>
<context>
    <name>QvelWidgetGuid</name>
    <message>
        <source>Guid</source>
        <translation>Guid</translation>
    </message>
</context>
<context>
    <name>QvelWidgetLocalizedText</name>
    <message>
        <source>Locale</source>
        <translation>Sprachkennung</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
</context>
<context>
    <name>QvelWidgetNodeId</name>
    <message>
        <source>Numeric</source>
        <translation>Numeric</translation>
    </message>
    <message>
        <source>String</source>
        <translation>String</translation>
    </message>
    <message>
        <source>Guid</source>
        <translation>Guid</translation>
    </message>
    <message>
        <source>Opaque</source>
        <translation>Opaque</translation>
    </message>
    <message>
        <source>Namespace index</source>
        <translation>Namensraumindex</translation>
    </message>
    <message>
        <source>Identifier type</source>
        <translation>Art des Identifiers</translation>
    </message>
    <message>
        <source>Identifier</source>
        <translation>Identifier</translation>
    </message>
</context>
<context>
    <name>QvelWidgetQualifiedName</name>
    <message>
        <source>Namespace index</source>
        <translation>Namensraumindex</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
</context>
<context>
    <name>QvelWidgetStatusCode</name>
    <message>
        <source>Status code</source>
        <translation>Statuscode</translation>
    </message>
</context>
<context>
    <name>QvelWidgetValueRank</name>
    <message>
        <source>ScalarOrOneDimension (%1)</source>
        <translation>ScalarOrOneDimension (%1)</translation>
    </message>
    <message>
        <source>Any (%1)</source>
        <translation>Any (%1)</translation>
    </message>
    <message>
        <source>Scalar (%1)</source>
        <translation>Scalar (%1)</translation>
    </message>
    <message>
        <source>OneOrMoreDimensions (%1)</source>
        <translation>OneOrMoreDimensions (%1)</translation>
    </message>
    <message>
        <source>OneDimension (%1)</source>
        <translation>OneDimension (%1)</translation>
    </message>
    <message>
        <source>TwoDimensions (%1)</source>
        <translation>TwoDimensions (%1)</translation>
    </message>
    <message>
        <source>Value rank</source>
        <translation>ValueRank</translation>
    </message>
</context>
<context>
    <name>QvelWidgetVariant</name>
    <message>
        <source>Null</source>
        <translation>Null</translation>
    </message>
    <message>
        <source>Boolean</source>
        <translation>Boolean</translation>
    </message>
    <message>
        <source>SByte</source>
        <translation>SByte</translation>
    </message>
    <message>
        <source>Byte</source>
        <translation>Byte</translation>
    </message>
    <message>
        <source>Int16</source>
        <translation>Int16</translation>
    </message>
    <message>
        <source>UInt16</source>
        <translation>UInt16</translation>
    </message>
    <message>
        <source>Int32</source>
        <translation>Int32</translation>
    </message>
    <message>
        <source>UInt32</source>
        <translation>UInt32</translation>
    </message>
    <message>
        <source>Int64</source>
        <translation>Int64</translation>
    </message>
    <message>
        <source>UInt64</source>
        <translation>UInt64</translation>
    </message>
    <message>
        <source>Float</source>
        <translation>Float</translation>
    </message>
    <message>
        <source>Double</source>
        <translation>Double</translation>
    </message>
    <message>
        <source>String</source>
        <translation>String</translation>
    </message>
    <message>
        <source>DateTime</source>
        <translation>DateTime</translation>
    </message>
    <message>
        <source>Guid</source>
        <translation>Guid</translation>
    </message>
    <message>
        <source>ByteString</source>
        <translation>ByteString</translation>
    </message>
    <message>
        <source>XmlElement</source>
        <translation>XmlElement</translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation>NodeId</translation>
    </message>
    <message>
        <source>ExpandedNodeId</source>
        <translation>ExpandedNodeId</translation>
    </message>
    <message>
        <source>StatusCode</source>
        <translation>StatusCode</translation>
    </message>
    <message>
        <source>QualifiedName</source>
        <translation>QualifiedName</translation>
    </message>
    <message>
        <source>LocalizedText</source>
        <translation>LocalizedText</translation>
    </message>
    <message>
        <source>Value:</source>
        <translation>Wert:</translation>
    </message>
    <message>
        <source>Scalar</source>
        <translation>Skalar</translation>
    </message>
    <message>
        <source>Array</source>
        <translation>Array</translation>
    </message>
    <message>
        <source>Matrix</source>
        <translation>Matrix</translation>
    </message>
    <message>
        <source>DataType:</source>
        <translation>Datentyp:</translation>
    </message>
    <message>
        <source>ArrayType:</source>
        <translation>Arraytyp:</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>QvelWidgetXmlElement</name>
    <message>
        <source>XML element</source>
        <translation>XML-Element</translation>
    </message>
</context>
<context>
    <name>Status</name>
    <message>
        <source>The values do not go together.</source>
        <translation>Die Werte passen nicht zusammen.</translation>
    </message>
    <message>
        <source>The method takes more arguments.</source>
        <translation>Die Methode nimmt mehr Argumente.</translation>
    </message>
    <message>
        <source>The node has no such attribute.</source>
        <translation>Der Knoten hat kein solches Attribut.</translation>
    </message>
    <message>
        <source>The connection, or the one behind the server, failed.</source>
        <translation>Die Verbindung, oder die hinter dem Server, ist gestört.</translation>
    </message>
    <message>
        <source>The connection was lost before the server answered; whether it has carried this out is not known.</source>
        <translation>Die Verbindung ging verloren, bevor der Server geantwortet hat; ob er dies ausgeführt hat, ist nicht bekannt.</translation>
    </message>
    <message>
        <source>The server cannot send the value in this encoding.</source>
        <translation>Der Server kann den Wert nicht in dieser Kodierung senden.</translation>
    </message>
    <message>
        <source>What was sent could not be read.</source>
        <translation>Das Gesendete konnte nicht gelesen werden.</translation>
    </message>
    <message>
        <source>The device has a failure.</source>
        <translation>Das Gerät ist gestört.</translation>
    </message>
    <message>
        <source>The value cannot be sent.</source>
        <translation>Der Wert kann nicht gesendet werden.</translation>
    </message>
    <message>
        <source>The value is larger than one side takes.</source>
        <translation>Der Wert ist größer, als eine der Seiten annimmt.</translation>
    </message>
    <message>
        <source>The range of elements is not one.</source>
        <translation>Der Bereich von Elementen ist keiner.</translation>
    </message>
    <message>
        <source>There are no elements in this range.</source>
        <translation>In diesem Bereich gibt es keine Elemente.</translation>
    </message>
    <message>
        <source>The server failed at it: see its log.</source>
        <translation>Der Server ist daran gescheitert: siehe sein Protokoll.</translation>
    </message>
    <message>
        <source>An argument was not accepted; it is marked.</source>
        <translation>Ein Argument wurde nicht angenommen; es ist markiert.</translation>
    </message>
    <message>
        <source>This cannot be done in the state that the object is in.</source>
        <translation>Das ist im jetzigen Zustand des Objekts nicht möglich.</translation>
    </message>
    <message>
        <source>The object has no such method.</source>
        <translation>Das Objekt hat keine solche Methode.</translation>
    </message>
    <message>
        <source>The server does not know this filter.</source>
        <translation>Der Server kennt diesen Filter nicht.</translation>
    </message>
    <message>
        <source>The server has no connection to where the value comes from.</source>
        <translation>Der Server hat keine Verbindung zur Quelle des Werts.</translation>
    </message>
    <message>
        <source>There is no value.</source>
        <translation>Es gibt keinen Wert.</translation>
    </message>
    <message>
        <source>This is no NodeId that the server takes.</source>
        <translation>Das ist keine NodeId, die der Server annimmt.</translation>
    </message>
    <message>
        <source>The server has no such node, or no longer.</source>
        <translation>Der Server hat keinen solchen Knoten, oder nicht mehr.</translation>
    </message>
    <message>
        <source>The variable is not connected to where its value comes from.</source>
        <translation>Die Variable ist nicht mit der Quelle ihres Werts verbunden.</translation>
    </message>
    <message>
        <source>The method cannot be called now.</source>
        <translation>Die Methode kann jetzt nicht aufgerufen werden.</translation>
    </message>
    <message>
        <source>The server has not implemented this.</source>
        <translation>Der Server hat das nicht implementiert.</translation>
    </message>
    <message>
        <source>The attribute may not be read, or not by this user.</source>
        <translation>Das Attribut darf nicht gelesen werden, oder nicht von diesem Benutzer.</translation>
    </message>
    <message>
        <source>The server does not support this.</source>
        <translation>Der Server unterstützt das nicht.</translation>
    </message>
    <message>
        <source>The attribute may not be written.</source>
        <translation>Das Attribut darf nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>There was nothing to do.</source>
        <translation>Es gab nichts zu tun.</translation>
    </message>
    <message>
        <source>There is not enough memory.</source>
        <translation>Es ist nicht genug Speicher da.</translation>
    </message>
    <message>
        <source>The value is out of the range of its type, or of the node.</source>
        <translation>Der Wert liegt außerhalb des Bereichs seines Typs oder des Knotens.</translation>
    </message>
    <message>
        <source>The source of the value is out of service.</source>
        <translation>Die Quelle des Werts ist außer Betrieb.</translation>
    </message>
    <message>
        <source>It was cancelled here.</source>
        <translation>Es wurde hier abgebrochen.</translation>
    </message>
    <message>
        <source>It is more than the server takes.</source>
        <translation>Es ist mehr, als der Server annimmt.</translation>
    </message>
    <message>
        <source>The server needs something that it cannot get now.</source>
        <translation>Dem Server fehlt etwas, das er jetzt nicht bekommt.</translation>
    </message>
    <message>
        <source>The answer is larger than this application takes.</source>
        <translation>Die Antwort ist größer, als diese Anwendung annimmt.</translation>
    </message>
    <message>
        <source>The server allows this over an encrypted connection only.</source>
        <translation>Der Server erlaubt das nur über eine verschlüsselte Verbindung.</translation>
    </message>
    <message>
        <source>The sensor has a failure.</source>
        <translation>Der Sensor ist gestört.</translation>
    </message>
    <message>
        <source>The server does not do this at all.</source>
        <translation>Der Server kann das überhaupt nicht.</translation>
    </message>
    <message>
        <source>There is no connection to the server.</source>
        <translation>Es besteht keine Verbindung zum Server.</translation>
    </message>
    <message>
        <source>The server does not know the session.</source>
        <translation>Der Server kennt die Sitzung nicht.</translation>
    </message>
    <message>
        <source>The session has ended.</source>
        <translation>Die Sitzung ist beendet.</translation>
    </message>
    <message>
        <source>The server did not answer in time.</source>
        <translation>Der Server hat nicht rechtzeitig geantwortet.</translation>
    </message>
    <message>
        <source>The method takes fewer arguments.</source>
        <translation>Die Methode nimmt weniger Argumente.</translation>
    </message>
    <message>
        <source>The server monitors no more values for anyone.</source>
        <translation>Der Server überwacht keine weiteren Werte mehr.</translation>
    </message>
    <message>
        <source>It is more at a time than the server takes.</source>
        <translation>Es ist mehr auf einmal, als der Server annimmt.</translation>
    </message>
    <message>
        <source>The value is not of the data type that is asked for.</source>
        <translation>Der Wert hat nicht den verlangten Datentyp.</translation>
    </message>
    <message>
        <source>Something failed unexpectedly.</source>
        <translation>Etwas ist unerwartet fehlgeschlagen.</translation>
    </message>
    <message>
        <source>This user may not do that.</source>
        <translation>Dieser Benutzer darf das nicht.</translation>
    </message>
    <message>
        <source>The server has no value yet.</source>
        <translation>Der Server hat noch keinen Wert.</translation>
    </message>
    <message>
        <source>The server does not take this combination of value, status and times.</source>
        <translation>Der Server nimmt diese Kombination aus Wert, Status und Zeiten nicht an.</translation>
    </message>
    <message>
        <source>Taken, but limited to what the node can hold.</source>
        <translation>Übernommen, aber auf das begrenzt, was der Knoten fasst.</translation>
    </message>
    <message>
        <source>Taken; the server goes on with it.</source>
        <translation>Angenommen; der Server arbeitet daran weiter.</translation>
    </message>
    <message>
        <source>The value was put in by hand where it comes from.</source>
        <translation>Der Wert wurde an seiner Quelle von Hand eingegeben.</translation>
    </message>
    <message>
        <source>It is a value to begin with, from no source.</source>
        <translation>Es ist ein Anfangswert, der von keiner Quelle kommt.</translation>
    </message>
    <message>
        <source>It is the last known value; its source does not update it.</source>
        <translation>Es ist der letzte bekannte Wert; seine Quelle aktualisiert ihn nicht.</translation>
    </message>
    <message>
        <source>The sensor is at its limit or not calibrated.</source>
        <translation>Der Sensor ist an seiner Grenze oder nicht kalibriert.</translation>
    </message>
    <message>
        <source>Fewer sources than needed are good.</source>
        <translation>Weniger Quellen als nötig sind gut.</translation>
    </message>
    <message>
        <source>The server refused it.</source>
        <translation>Der Server hat es abgelehnt.</translation>
    </message>
    <message>
        <source>The value is not certain.</source>
        <translation>Der Wert ist nicht sicher.</translation>
    </message>
    <message>
        <source>Not connected: this is as it was seen last.</source>
        <translation>Nicht verbunden: So wurde es zuletzt gesehen.</translation>
    </message>
    <message>
        <source>Waiting for the server ...</source>
        <translation>Warten auf den Server ...</translation>
    </message>
</context>
<context>
    <name>UaPkiFinding</name>
    <message>
        <source>The certificate is damaged or its signature is wrong. %1</source>
        <translation>Das Zertifikat ist beschädigt oder seine Signatur falsch. %1</translation>
    </message>
    <message>
        <source>The certificate of an issuer is missing, so its origin is unproven. %1</source>
        <translation>Das Zertifikat eines Ausstellers fehlt, daher ist die Herkunft nicht belegt. %1</translation>
    </message>
    <message>
        <source>The security policy does not allow the certificate. %1</source>
        <translation>Die Sicherheitsrichtlinie lässt das Zertifikat nicht zu. %1</translation>
    </message>
    <message>
        <source>Neither the certificate nor an issuer is trusted yet. %1</source>
        <translation>Weder dem Zertifikat noch einem Aussteller wird bisher vertraut. %1</translation>
    </message>
    <message>
        <source>The certificate is not valid at this time. %1</source>
        <translation>Das Zertifikat ist zurzeit nicht gültig. %1</translation>
    </message>
    <message>
        <source>An issuer&apos;s certificate is not valid at this time. %1</source>
        <translation>Das Zertifikat eines Ausstellers ist zurzeit nicht gültig. %1</translation>
    </message>
    <message>
        <source>The certificate was made for another computer. %1</source>
        <translation>Das Zertifikat wurde für einen anderen Rechner ausgestellt. %1</translation>
    </message>
    <message>
        <source>The certificate was made for another application. %1</source>
        <translation>Das Zertifikat wurde für eine andere Anwendung ausgestellt. %1</translation>
    </message>
    <message>
        <source>The certificate was not made for this use. %1</source>
        <translation>Das Zertifikat wurde nicht für diese Verwendung ausgestellt. %1</translation>
    </message>
    <message>
        <source>An issuer may not issue certificates. %1</source>
        <translation>Ein Aussteller darf keine Zertifikate ausstellen. %1</translation>
    </message>
    <message>
        <source>Whether the certificate was revoked is not known. %1</source>
        <translation>Ob das Zertifikat gesperrt wurde, ist nicht bekannt. %1</translation>
    </message>
    <message>
        <source>Whether an issuer&apos;s certificate was revoked is not known. %1</source>
        <translation>Ob das Zertifikat eines Ausstellers gesperrt wurde, ist nicht bekannt. %1</translation>
    </message>
    <message>
        <source>The certificate was revoked. %1</source>
        <translation>Das Zertifikat wurde gesperrt. %1</translation>
    </message>
    <message>
        <source>The certificate of an issuer was revoked. %1</source>
        <translation>Das Zertifikat eines Ausstellers wurde gesperrt. %1</translation>
    </message>
    <message>
        <source>It has no RSA key.</source>
        <translation>Es hat keinen RSA-Schlüssel.</translation>
    </message>
    <message>
        <source>Its key has %1 bits, the policy asks for %2 to %3.</source>
        <translation>Sein Schlüssel hat %1 Bit, die Richtlinie verlangt %2 bis %3.</translation>
    </message>
    <message>
        <source>It is signed by an algorithm that is out of date.</source>
        <translation>Es ist mit einem veralteten Verfahren signiert.</translation>
    </message>
    <message>
        <source>It is valid from %1 to %2.</source>
        <translation>Es ist gültig von %1 bis %2.</translation>
    </message>
    <message>
        <source>It lacks %1.</source>
        <translation>Es fehlt: %1.</translation>
    </message>
    <message>
        <source>There is no folder for it.</source>
        <translation>Dafür gibt es keinen Ordner.</translation>
    </message>
    <message>
        <source>The folder %1 cannot be made.</source>
        <translation>Der Ordner %1 kann nicht angelegt werden.</translation>
    </message>
    <message>
        <source>The file %1 cannot be written.</source>
        <translation>Die Datei %1 kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>It cannot be decoded.</source>
        <translation>Es kann nicht dekodiert werden.</translation>
    </message>
    <message>
        <source>Its signature is not that of the issuer.</source>
        <translation>Seine Signatur ist nicht die des Ausstellers.</translation>
    </message>
    <message>
        <source>It names %1, not %2.</source>
        <translation>Es nennt %1, nicht %2.</translation>
    </message>
    <message>
        <source>no computer</source>
        <translation>keinen Rechner</translation>
    </message>
    <message>
        <source>It holds &quot;%1&quot;, the server announces &quot;%2&quot;.</source>
        <translation>Es enthält &quot;%1&quot;, der Server meldet &quot;%2&quot;.</translation>
    </message>
    <message>
        <source>The issuer&apos;s list is out of date.</source>
        <translation>Die Sperrliste des Ausstellers ist veraltet.</translation>
    </message>
</context>
</TS>

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>CertificateStore</name>
    <message>
        <source>The folder %1 cannot be created</source>
        <translation>Der Ordner %1 kann nicht angelegt werden</translation>
    </message>
    <message>
        <source>The certificate %1 is not valid today; without it and its key, a new one is made</source>
        <translation>Das Zertifikat %1 ist heute nicht gültig; ohne dieses und seinen Schlüssel wird ein neues erzeugt</translation>
    </message>
    <message>
        <source>Made the certificate %1, which the server has to trust</source>
        <translation>Das Zertifikat %1 wurde erzeugt; der Server muss ihm vertrauen</translation>
    </message>
    <message>
        <source>The certificate %1 cannot be made</source>
        <translation>Das Zertifikat %1 kann nicht erzeugt werden</translation>
    </message>
</context>
<context>
    <name>CertificatesPage</name>
    <message>
        <source>&amp;Make One Now</source>
        <translation>&amp;Jetzt erzeugen</translation>
    </message>
    <message>
        <source>Co&amp;py harrier&apos;s Certificate...</source>
        <translation>Zertifikat von harrier &amp;kopieren...</translation>
    </message>
    <message>
        <source>&amp;Import a Server&apos;s Certificate...</source>
        <translation>Zertifikat eines Servers &amp;importieren...</translation>
    </message>
    <message>
        <source>Trusts the certificate of a server; files may be dropped here, too</source>
        <translation>Vertraut dem Zertifikat eines Servers; Dateien können auch hierher gezogen werden</translation>
    </message>
    <message>
        <source>Selected certificate</source>
        <translation>Ausgewähltes Zertifikat</translation>
    </message>
    <message>
        <source>Next: have servers trust harrier. Copy harrier&apos;s certificate, and put it among the trusted ones of each server; many list it under the rejected ones after the first attempt to connect. A server whose certificate harrier does not know is asked about when you connect; or import its certificate here.</source>
        <translation>Nächster Schritt: Die Server müssen harrier vertrauen. Kopieren Sie das Zertifikat von harrier, und legen Sie es bei jedem Server unter den vertrauenswürdigen ab; viele führen es nach dem ersten Verbindungsversuch unter den abgelehnten auf. Kennt harrier das Zertifikat eines Servers nicht, so wird beim Verbinden danach gefragt; oder importieren Sie es hier.</translation>
    </message>
    <message>
        <source>harrier makes itself a certificate when a secure connection first needs it. You may also have it made now, so as to give it to servers before.</source>
        <translation>harrier erzeugt sich ein Zertifikat, sobald eine sichere Verbindung es zum ersten Mal braucht. Sie können es auch jetzt erzeugen lassen, um es den Servern vorher zu geben.</translation>
    </message>
    <message>
        <source>Import Certificates of Servers</source>
        <translation>Zertifikate von Servern importieren</translation>
    </message>
    <message>
        <source>Certificates (*.der *.cer *.crt *.pem);;All files (*)</source>
        <translation>Zertifikate (*.der *.cer *.crt *.pem);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>it holds no certificate</source>
        <translation>sie enthält kein Zertifikat</translation>
    </message>
    <message>
        <source>%1 was not imported: %2</source>
        <translation>%1 wurde nicht importiert: %2</translation>
    </message>
    <message>
        <source>Certificates that are trusted now: %1</source>
        <translation>Jetzt vertrauenswürdige Zertifikate: %1</translation>
    </message>
    <message>
        <source>Certificates that are trusted now: %1; that could not be imported: %2, see the log</source>
        <translation>Jetzt vertrauenswürdige Zertifikate: %1; nicht importiert: %2, siehe Protokoll</translation>
    </message>
</context>
<context>
    <name>ConnectionPage</name>
    <message>
        <source>Use &amp;Connection</source>
        <translation>Verbindung ver&amp;wenden</translation>
    </message>
    <message>
        <source>Files the connection under &quot;Recently Used&quot; with these settings</source>
        <translation>Legt die Verbindung mit diesen Einstellungen unter „Zuletzt verwendet“ ab</translation>
    </message>
    <message>
        <source>C&amp;onnect</source>
        <translation>&amp;Verbinden</translation>
    </message>
    <message>
        <source>Opens a session with these settings</source>
        <translation>Öffnet eine Sitzung mit diesen Einstellungen</translation>
    </message>
    <message>
        <source>Security policy %1</source>
        <translation>Sicherheitsrichtlinie %1</translation>
    </message>
    <message>
        <source>Security policy of this server; unknown to the standard</source>
        <translation>Sicherheitsrichtlinie dieses Servers; dem Standard unbekannt</translation>
    </message>
    <message>
        <source>Security policy %1: withdrawn, no longer secure; for old servers only</source>
        <translation>Sicherheitsrichtlinie %1: zurückgezogen, nicht mehr sicher; nur für alte Server</translation>
    </message>
    <message>
        <source>The security policy of this endpoint is not known</source>
        <translation>Die Sicherheitsrichtlinie dieses Endpunkts ist nicht bekannt</translation>
    </message>
</context>
<context>
    <name>DiscoveryHint</name>
    <message>
        <source>Double-click the endpoint, or press Connect, to open a session. The page Connection changes user and security before that.</source>
        <translation>Doppelklicken Sie auf den Endpunkt, oder drücken Sie „Verbinden“, um eine Sitzung zu öffnen. Auf der Seite „Verbindung“ lassen sich vorher Benutzer und Sicherheit ändern.</translation>
    </message>
    <message>
        <source>The server offers no endpoint of opc.tcp.</source>
        <translation>Der Server bietet keinen Endpunkt mit opc.tcp an.</translation>
    </message>
    <message>
        <source>Open the server to see its endpoints: each is a way to connect, with its own security.</source>
        <translation>Klappen Sie den Server auf, um seine Endpunkte zu sehen: Jeder ist ein Weg, sich zu verbinden, mit eigener Sicherheit.</translation>
    </message>
    <message>
        <source>No server was found there.</source>
        <translation>Dort wurde kein Server gefunden.</translation>
    </message>
    <message>
        <source>Open the entry to see which servers are there.</source>
        <translation>Klappen Sie den Eintrag auf, um zu sehen, welche Server dort sind.</translation>
    </message>
    <message>
        <source>No server announces itself on the network. Many never do: give their URL under &quot;Custom Discovery&quot;.</source>
        <translation>Kein Server meldet sich im Netzwerk. Viele tun das nie: Geben Sie deren URL unter „Eigene Discovery-Server“ an.</translation>
    </message>
    <message>
        <source>Computers that announce OPC UA servers.</source>
        <translation>Rechner, die OPC-UA-Server melden.</translation>
    </message>
    <message>
        <source>Double-click the entry, or press Enter on it, to give the URL of a server, such as opc.tcp://plc17:4840.</source>
        <translation>Doppelklicken Sie auf den Eintrag, oder drücken Sie dort die Eingabetaste, um die URL eines Servers anzugeben, etwa opc.tcp://plc17:4840.</translation>
    </message>
    <message>
        <source>Endpoints that you have used will be listed here.</source>
        <translation>Hier werden die Endpunkte aufgeführt, die Sie verwendet haben.</translation>
    </message>
    <message>
        <source>Double-click an endpoint to connect as last time.</source>
        <translation>Doppelklicken Sie auf einen Endpunkt, um sich wie beim letzten Mal zu verbinden.</translation>
    </message>
    <message>
        <source>URLs that you have added. Open one to see which servers are there.</source>
        <translation>URLs, die Sie hinzugefügt haben. Klappen Sie eine auf, um zu sehen, welche Server dort sind.</translation>
    </message>
    <message>
        <source>Looking...</source>
        <translation>Suche läuft ...</translation>
    </message>
    <message>
        <source>Choose a server on the left: &quot;Local&quot; lists those of this computer; for any other, double-click &quot;&lt; Double click to Add Server... &gt;&quot; and give its URL. Then double-click one of its endpoints to connect.</source>
        <translation>Wählen Sie links einen Server: „Lokal“ führt die dieses Rechners auf; für jeden anderen doppelklicken Sie auf „&lt; Double click to Add Server... &gt;“ und geben seine URL an. Doppelklicken Sie dann auf einen seiner Endpunkte, um sich zu verbinden.</translation>
    </message>
    <message>
        <source>Look Under %1</source>
        <translation>Unter %1 suchen</translation>
    </message>
    <message>
        <source>Choose one of the endpoints below: each is a way to connect, with its own security.</source>
        <translation>Wählen Sie darunter einen der Endpunkte: Jeder ist ein Weg, sich zu verbinden, mit eigener Sicherheit.</translation>
    </message>
    <message>
        <source>Open one of the servers below to see its endpoints.</source>
        <translation>Klappen Sie darunter einen der Server auf, um seine Endpunkte zu sehen.</translation>
    </message>
</context>
<context>
    <name>EditorWatch</name>
    <message>
        <source>%1: value</source>
        <translation>%1: Wert</translation>
    </message>
    <message>
        <source>%1: validity</source>
        <translation>%1: Gültigkeit</translation>
    </message>
    <message>
        <source>%1: last signals</source>
        <translation>%1: letzte Signale</translation>
    </message>
    <message>
        <source>ok</source>
        <translation>gültig</translation>
    </message>
    <message>
        <source>not valid</source>
        <translation>ungültig</translation>
    </message>
</context>
<context>
    <name>EndpointDetails</name>
    <message>
        <source>Anonymous</source>
        <translation>Anonym</translation>
    </message>
    <message>
        <source>User name and password</source>
        <translation>Benutzername und Kennwort</translation>
    </message>
    <message>
        <source>Certificate</source>
        <translation>Zertifikat</translation>
    </message>
    <message>
        <source>Issued token</source>
        <translation>Ausgestelltes Token</translation>
    </message>
    <message>
        <source>Unknown token type %1</source>
        <translation>Unbekannte Token-Art %1</translation>
    </message>
    <message>
        <source>Invalid</source>
        <translation>Ungültig</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keiner</translation>
    </message>
    <message>
        <source>Sign</source>
        <translation>Signieren</translation>
    </message>
    <message>
        <source>Sign and encrypt</source>
        <translation>Signieren und verschlüsseln</translation>
    </message>
    <message>
        <source>Unknown mode %1</source>
        <translation>Unbekannter Modus %1</translation>
    </message>
    <message>
        <source>More: %1</source>
        <translation>Weitere: %1</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>Application URI</source>
        <translation>Anwendungs-URI</translation>
    </message>
    <message>
        <source>Endpoint URL</source>
        <translation>Endpunkt-URL</translation>
    </message>
    <message>
        <source>Security policy</source>
        <translation>Sicherheitsrichtlinie</translation>
    </message>
    <message>
        <source>Security mode</source>
        <translation>Sicherheitsmodus</translation>
    </message>
    <message>
        <source>Security level</source>
        <translation>Sicherheitsstufe</translation>
    </message>
    <message>
        <source>Transport profile</source>
        <translation>Transportprofil</translation>
    </message>
    <message>
        <source>User identity tokens</source>
        <translation>Anmeldearten</translation>
    </message>
    <message>
        <source>Endpoint</source>
        <translation>Endpunkt</translation>
    </message>
    <message>
        <source>Server certificate</source>
        <translation>Serverzertifikat</translation>
    </message>
    <message>
        <source>Select an endpoint in the discovery tree</source>
        <translation>Wählen Sie links einen Endpunkt aus</translation>
    </message>
    <message>
        <source>&amp;Use This Endpoint</source>
        <translation>Endpunkt ver&amp;wenden</translation>
    </message>
    <message>
        <source>Files the endpoint under &quot;Recently Used&quot;</source>
        <translation>Legt den Endpunkt unter „Zuletzt verwendet“ ab</translation>
    </message>
    <message>
        <source>C&amp;onnect</source>
        <translation>&amp;Verbinden</translation>
    </message>
    <message>
        <source>Opens a session with this endpoint</source>
        <translation>Öffnet eine Sitzung mit diesem Endpunkt</translation>
    </message>
    <message>
        <source>Not a certificate (bytes: %1)</source>
        <translation>Kein Zertifikat (Bytes: %1)</translation>
    </message>
</context>
<context>
    <name>Gallery</name>
    <message>
        <source>Gallery - harrier</source>
        <translation>Galerie - harrier</translation>
    </message>
</context>
<context>
    <name>LogView</name>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Discovery reports here what it finds and what fails.</source>
        <translation>Hier meldet die Suche, was sie findet und was fehlschlägt.</translation>
    </message>
    <message>
        <source>Lines not shown: %1</source>
        <translation>Nicht gezeigte Zeilen: %1</translation>
    </message>
</context>
<context>
    <name>LoginDialog</name>
    <message>
        <source>Log In</source>
        <translation>Anmelden</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Kennwort</translation>
    </message>
    <message>
        <source>&amp;User name:</source>
        <translation>&amp;Benutzername:</translation>
    </message>
    <message>
        <source>&amp;Password:</source>
        <translation>&amp;Kennwort:</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Filed under &quot;Recently Used&quot; (entries: %1)</source>
        <translation>Unter „Zuletzt verwendet“ abgelegt (Einträge: %1)</translation>
    </message>
    <message>
        <source>The existing entry was kept</source>
        <translation>Der vorhandene Eintrag wurde behalten</translation>
    </message>
    <message>
        <source>Open servers: %1</source>
        <translation>Offene Server: %1</translation>
    </message>
    <message>
        <source>harrier</source>
        <translation>harrier</translation>
    </message>
    <message>
        <source>%1 - harrier</source>
        <translation>%1 - harrier</translation>
    </message>
    <message>
        <source>&amp;Copy Log</source>
        <translation>Protokoll &amp;kopieren</translation>
    </message>
    <message>
        <source>C&amp;lear Log</source>
        <translation>Protokoll &amp;leeren</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Server</source>
        <translation>&amp;Server</translation>
    </message>
    <message>
        <source>&amp;Connect</source>
        <translation>&amp;Verbinden</translation>
    </message>
    <message>
        <source>&amp;Use This Endpoint</source>
        <translation>Endpunkt ver&amp;wenden</translation>
    </message>
    <message>
        <source>&amp;Disconnect</source>
        <translation>&amp;Trennen</translation>
    </message>
    <message>
        <source>&amp;Reconnect</source>
        <translation>&amp;Neu verbinden</translation>
    </message>
    <message>
        <source>&amp;Log In...</source>
        <translation>An&amp;melden...</translation>
    </message>
    <message>
        <source>Cl&amp;ose Server</source>
        <translation>Server &amp;schließen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Gallery</source>
        <translation>&amp;Galerie</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>&amp;Protokoll</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About harrier</source>
        <translation>&amp;Über harrier</translation>
    </message>
    <message>
        <source>&amp;System Default</source>
        <translation>&amp;Systemvorgabe</translation>
    </message>
    <message>
        <source>Lan&amp;guage</source>
        <translation>Spra&amp;che</translation>
    </message>
    <message>
        <source>Find Servers</source>
        <translation>Server suchen</translation>
    </message>
    <message>
        <source>OPC UA</source>
        <translation>OPC UA</translation>
    </message>
    <message>
        <source>Data Access</source>
        <translation>Data Access</translation>
    </message>
    <message>
        <source>Alarms &amp; Events</source>
        <translation>Alarms &amp; Events</translation>
    </message>
    <message>
        <source>&amp;OPC UA</source>
        <translation>&amp;OPC UA</translation>
    </message>
    <message>
        <source>Data &amp;Access</source>
        <translation>Da&amp;ta Access</translation>
    </message>
    <message>
        <source>Ala&amp;rms &amp;&amp; Events</source>
        <translation>Ala&amp;rms &amp;&amp; Events</translation>
    </message>
    <message>
        <source>%1 servers</source>
        <translation>%1-Server</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>&amp;%1 %2</source>
        <translation>&amp;%1 %2</translation>
    </message>
    <message>
        <source>&amp;Reset Layout</source>
        <translation>Anordnung &amp;zurücksetzen</translation>
    </message>
    <message>
        <source>About harrier</source>
        <translation>Über harrier</translation>
    </message>
    <message>
        <source>harrier %1 is the client of the kestrel library: it finds OPC UA servers, shows what is in them, and changes it.</source>
        <translation>harrier %1 ist der Client der Bibliothek kestrel: Er findet OPC-UA-Server, zeigt, was darin ist, und ändert es.</translation>
    </message>
    <message>
        <source>Show as a &amp;Tab Again</source>
        <translation>Wieder als Re&amp;gister zeigen</translation>
    </message>
    <message>
        <source>Open in a &amp;Window of Its Own</source>
        <translation>In &amp;eigenem Fenster öffnen</translation>
    </message>
</context>
<context>
    <name>NodeIdPage</name>
    <message>
        <source>ok</source>
        <translation>gültig</translation>
    </message>
    <message>
        <source>not valid</source>
        <translation>ungültig</translation>
    </message>
    <message>
        <source>%1: value</source>
        <translation>%1: Wert</translation>
    </message>
    <message>
        <source>%1: validity</source>
        <translation>%1: Gültigkeit</translation>
    </message>
    <message>
        <source>Inline</source>
        <translation>Im Formular</translation>
    </message>
    <message>
        <source>Read-only copy</source>
        <translation>Schreibgeschützte Kopie</translation>
    </message>
    <message>
        <source>Without frame</source>
        <translation>Ohne Rahmen</translation>
    </message>
    <message>
        <source>Dialog</source>
        <translation>Dialog</translation>
    </message>
    <message>
        <source>Edit in &amp;Dialog...</source>
        <translation>Im &amp;Dialog bearbeiten...</translation>
    </message>
    <message>
        <source>Editors</source>
        <translation>Editoren</translation>
    </message>
    <message>
        <source>Signals</source>
        <translation>Signale</translation>
    </message>
    <message>
        <source>Edit a NodeId to see its signals.</source>
        <translation>Bearbeiten Sie eine NodeId, um ihre Signale zu sehen.</translation>
    </message>
    <message>
        <source>Last signals</source>
        <translation>Letzte Signale</translation>
    </message>
</context>
<context>
    <name>Page</name>
    <message>
        <source>Endpoint</source>
        <translation>Endpunkt</translation>
    </message>
    <message>
        <source>Connection</source>
        <translation>Verbindung</translation>
    </message>
    <message>
        <source>Certificates</source>
        <translation>Zertifikate</translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation>NodeId</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
    <message>
        <source>Write value</source>
        <translation>Wert schreiben</translation>
    </message>
</context>
<context>
    <name>Project</name>
    <message>
        <source>%1 cannot be read: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>%1 is too large for a project.</source>
        <translation>%1 ist zu groß für ein Projekt.</translation>
    </message>
    <message>
        <source>%1 is damaged at line %2: %3. It was not opened, and is left as it is.</source>
        <translation>%1 ist in Zeile %2 beschädigt: %3. Die Datei wurde nicht geöffnet und bleibt, wie sie ist.</translation>
    </message>
    <message>
        <source>%1 is no project of harrier.</source>
        <translation>%1 ist kein Projekt von harrier.</translation>
    </message>
    <message>
        <source>%1 was made by a later harrier, which writes version %2 of the format; this one knows version %3. It was not opened, and is left as it is.</source>
        <translation>%1 stammt von einem neueren harrier, der Version %2 des Formats schreibt; dieser kennt Version %3. Die Datei wurde nicht geöffnet und bleibt, wie sie ist.</translation>
    </message>
    <message>
        <source>%1 is damaged: its servers are no list. It was not opened, and is left as it is.</source>
        <translation>%1 ist beschädigt: Die Server sind keine Liste. Die Datei wurde nicht geöffnet und bleibt, wie sie ist.</translation>
    </message>
    <message>
        <source>%1 cannot be written: %2</source>
        <translation>%1 kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>A server of the project has no URL. It is kept in the file.</source>
        <translation>Ein Server des Projekts hat keine URL. Er bleibt in der Datei erhalten.</translation>
    </message>
</context>
<context>
    <name>ProjectControl</name>
    <message>
        <source>&amp;New Project</source>
        <translation>&amp;Neues Projekt</translation>
    </message>
    <message>
        <source>&amp;Open Project...</source>
        <translation>Projekt ö&amp;ffnen...</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>&amp;Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>&amp;Save Project</source>
        <translation>Projekt &amp;speichern</translation>
    </message>
    <message>
        <source>Save Project &amp;As...</source>
        <translation>Projekt speichern &amp;unter...</translation>
    </message>
    <message>
        <source>harrier</source>
        <translation>harrier</translation>
    </message>
    <message>
        <source>Open Project</source>
        <translation>Projekt öffnen</translation>
    </message>
    <message>
        <source>Projects (*.harrier);;All files (*)</source>
        <translation>Projekte (*.harrier);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>%1 could not be written; the log says why.</source>
        <translation>%1 konnte nicht geschrieben werden; das Protokoll sagt, warum.</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 gespeichert</translation>
    </message>
    <message>
        <source>Save Project</source>
        <translation>Projekt speichern</translation>
    </message>
    <message>
        <source>Projects (*.harrier)</source>
        <translation>Projekte (*.harrier)</translation>
    </message>
    <message>
        <source>plant.harrier</source>
        <translation>anlage.harrier</translation>
    </message>
    <message>
        <source>Save the changes of %1?</source>
        <translation>Änderungen an %1 speichern?</translation>
    </message>
    <message>
        <source>The servers of the last run are open again</source>
        <translation>Die Server des letzten Laufs sind wieder offen</translation>
    </message>
    <message>
        <source>Changes of %1 that were not saved are back</source>
        <translation>Nicht gespeicherte Änderungen an %1 sind wieder da</translation>
    </message>
    <message>
        <source>&amp;Last Servers</source>
        <translation>&amp;Letzte Server</translation>
    </message>
</context>
<context>
    <name>SessionPage</name>
    <message>
        <source>%1 failed: %2.</source>
        <translation>%1 ist fehlgeschlagen: %2.</translation>
    </message>
    <message>
        <source>The server says: %1</source>
        <translation>Der Server sagt: %1</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Address Space</source>
        <translation>Adressraum</translation>
    </message>
    <message>
        <source>Data View</source>
        <translation>Datenansicht</translation>
    </message>
    <message>
        <source>Attributes</source>
        <translation>Attribute</translation>
    </message>
    <message>
        <source>References</source>
        <translation>Referenzen</translation>
    </message>
    <message>
        <source>Call</source>
        <translation>Aufruf</translation>
    </message>
    <message>
        <source>Session</source>
        <translation>Sitzung</translation>
    </message>
    <message>
        <source>Trend</source>
        <translation>Trend</translation>
    </message>
    <message>
        <source>Add to &amp;Data View</source>
        <translation>In die &amp;Datenansicht</translation>
    </message>
    <message>
        <source>Show in &amp;Trend</source>
        <translation>Im &amp;Trend zeigen</translation>
    </message>
    <message>
        <source>&amp;Call...</source>
        <translation>Auf&amp;rufen...</translation>
    </message>
    <message>
        <source>Steps of the connection</source>
        <translation>Schritte der Verbindung</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>A&amp;bbrechen</translation>
    </message>
    <message>
        <source>&amp;Log In...</source>
        <translation>An&amp;melden...</translation>
    </message>
    <message>
        <source>C&amp;ertificates</source>
        <translation>&amp;Zertifikate</translation>
    </message>
    <message>
        <source>User of %1</source>
        <translation>Benutzer von %1</translation>
    </message>
    <message>
        <source>This password does not open the key %1. Try again.</source>
        <translation>Dieses Kennwort öffnet den Schlüssel %1 nicht. Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The key %1 is locked by a password.</source>
        <translation>Der Schlüssel %1 ist durch ein Kennwort geschützt.</translation>
    </message>
    <message>
        <source>%1: connected to %2, %3</source>
        <translation>%1: verbunden mit %2, %3</translation>
    </message>
    <message>
        <source>with the best security</source>
        <translation>mit der besten Sicherheit</translation>
    </message>
    <message>
        <source>Not connected to %1 yet.</source>
        <translation>Noch nicht mit %1 verbunden.</translation>
    </message>
    <message>
        <source>Not connected to %1. What is shown is as it was last known.</source>
        <translation>Nicht mit %1 verbunden. Gezeigt wird der letzte bekannte Stand.</translation>
    </message>
    <message>
        <source>Connect to %1</source>
        <translation>Mit %1 verbinden</translation>
    </message>
    <message>
        <source>&amp;Connect</source>
        <translation>&amp;Verbinden</translation>
    </message>
    <message>
        <source>Try &amp;Again</source>
        <translation>&amp;Erneut versuchen</translation>
    </message>
    <message>
        <source>The connection is lost, and will be restored: %1
What is shown is as it was last known.</source>
        <translation>Die Verbindung ist abgebrochen und wird wiederhergestellt: %1
Gezeigt wird der letzte bekannte Stand.</translation>
    </message>
    <message>
        <source>Connecting to %1: %2</source>
        <translation>Verbinden mit %1: %2</translation>
    </message>
    <message>
        <source>Try &amp;Now</source>
        <translation>&amp;Jetzt versuchen</translation>
    </message>
    <message>
        <source>the data view of the project cannot be read, and is kept in the file</source>
        <translation>die Datenansicht des Projekts kann nicht gelesen werden und bleibt in der Datei erhalten</translation>
    </message>
    <message>
        <source>the trend of the project cannot be read, and is kept in the file</source>
        <translation>der Trend des Projekts kann nicht gelesen werden und bleibt in der Datei erhalten</translation>
    </message>
    <message>
        <source>waiting for your answer</source>
        <translation>wartet auf Ihre Antwort</translation>
    </message>
</context>
<context>
    <name>SettingsStore</name>
    <message>
        <source>The settings file %1 is not a settings file. It is left as it is; settings of this run are not kept.</source>
        <translation>Die Einstellungsdatei %1 ist keine Einstellungsdatei. Sie bleibt, wie sie ist; Einstellungen dieses Laufs werden nicht gespeichert.</translation>
    </message>
    <message>
        <source>The settings file %1 cannot be read and written. Settings of this run are not kept.</source>
        <translation>Die Einstellungsdatei %1 kann nicht gelesen und geschrieben werden. Einstellungen dieses Laufs werden nicht gespeichert.</translation>
    </message>
</context>
<context>
    <name>ValuesPage</name>
    <message>
        <source>Open...</source>
        <translation>Öffnen...</translation>
    </message>
    <message>
        <source>read-only</source>
        <translation>schreibgeschützt</translation>
    </message>
    <message>
        <source>no frame</source>
        <translation>ohne Rahmen</translation>
    </message>
    <message>
        <source>normal</source>
        <translation>normal</translation>
    </message>
    <message>
        <source>Editor</source>
        <translation>Editor</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Last signals</source>
        <translation>Letzte Signale</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>Value editors</source>
        <translation>Werteditoren</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 gespeichert</translation>
    </message>
    <message>
        <source>%1 could not be written</source>
        <translation>%1 konnte nicht geschrieben werden</translation>
    </message>
</context>
<context>
    <name>WriteValuePage</name>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>Array of Int32</source>
        <translation>Array von Int32</translation>
    </message>
    <message>
        <source>Array of String</source>
        <translation>Array von String</translation>
    </message>
    <message>
        <source>Matrix of Double, 2 by 3</source>
        <translation>Matrix von Double, 2 mal 3</translation>
    </message>
    <message>
        <source>Array of an enumeration</source>
        <translation>Array einer Aufzählung</translation>
    </message>
    <message>
        <source>Array of flags</source>
        <translation>Array von Flags</translation>
    </message>
    <message>
        <source>Array of 1,000,000 Int32</source>
        <translation>Array von 1.000.000 Int32</translation>
    </message>
    <message>
        <source>Nested: an array in an array</source>
        <translation>Verschachtelt: ein Array in einem Array</translation>
    </message>
    <message>
        <source>Unsupported: array of DataValue</source>
        <translation>Nicht unterstützt: Array von DataValue</translation>
    </message>
    <message>
        <source>array</source>
        <translation>Array</translation>
    </message>
    <message>
        <source>matrix</source>
        <translation>Matrix</translation>
    </message>
    <message>
        <source>scalar</source>
        <translation>Skalar</translation>
    </message>
    <message>
        <source>Type:</source>
        <translation>Typ:</translation>
    </message>
    <message>
        <source>Valid:</source>
        <translation>Gültig:</translation>
    </message>
    <message>
        <source>Text:</source>
        <translation>Text:</translation>
    </message>
    <message>
        <source>Examples</source>
        <translation>Beispiele</translation>
    </message>
    <message>
        <source>Full text</source>
        <translation>Vollständiger Text</translation>
    </message>
    <message>
        <source>Validity</source>
        <translation>Gültigkeit</translation>
    </message>
    <message>
        <source>Value to write</source>
        <translation>Zu schreibender Wert</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>type %1, %2</source>
        <translation>Typ %1, %2</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n element(s)</source>
        <translation>
            <numerusform>%1 mit %n Element</numerusform>
            <numerusform>%1 mit %n Elementen</numerusform>
        </translation>
    </message>
    <message>
        <source>ok</source>
        <translation>ja</translation>
    </message>
    <message>
        <source>not valid</source>
        <translation>nein</translation>
    </message>
</context>
</TS>

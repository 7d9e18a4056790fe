<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>ArgumentsModel</name>
    <message>
        <source>Argument %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not taken. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Argument</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Data Type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CertificateManager</name>
    <message>
        <source>Manage Certificates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;html&gt;&lt;head/&gt;&lt;body&gt;&lt;p&gt;&lt;span style=&quot; font-weight:600;&quot;&gt;Manage Certificates&lt;/span&gt;&lt;br/&gt;Displays information about all certificates in the Applications certificate store. Trust, reject, view and delete certificates by using the context menu.&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Certificate Location</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy Application Certificate To...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create new Application Certificate...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trust</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set the state of this certificate to Trusted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reject</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set the state of this certificate to Rejected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Certificate in External Viewer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create New...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete the certificate</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CsvRecorder</name>
    <message>
        <source>The disk does not keep up with the values</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DataViewTable</name>
    <message>
        <source>The clipboard holds no NodeIds.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drop variables here, paste NodeIds, or type one above.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing was added.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ElementTable</name>
    <message>
        <source>Elements</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value was replaced while one of its elements was edited. The edit was dropped.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This text is too long to be edited.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>EndpointSettingsWidget</name>
    <message>
        <source>Server Configuration</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;b&gt;Server Information&lt;/b&gt;&lt;br&gt;Specifies the endpoint URL to connect to. Always begins with &apos;opc.tcp:&apos;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Server Information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The endpoint URL of the server to connect to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Endpoint Url</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;b&gt;Security Settings&lt;/b&gt;&lt;br&gt;Specify the security settings for the connection.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Security Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The security policy to be used for the connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Security Policy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>None</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Basic128Rsa15</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Basic256</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The message security mode to be used for the connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Message Security Mode</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign &amp; Encrypt</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;b&gt;Authentication Settings&lt;/b&gt;&lt;br&gt;Select the user token type for the connection here. If store password is selected, the password will be stored just as long as Harrier is running and will not be written to disk.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Authentication Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Log on to the server as anonymous user</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Anonymous</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Log on to the server using username / password authentication</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Username</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;The username used for authentication&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;The password used for authentication&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Store the password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Store</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Log on to the server using a certificate (Currently not supported)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;The certificate used for authentication&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;!DOCTYPE HTML PUBLIC &quot;-//W3C//DTD HTML 4.0//EN&quot; &quot;http://www.w3.org/TR/REC-html40/strict.dtd&quot;&gt;
&lt;html&gt;&lt;head&gt;&lt;meta name=&quot;qrichtext&quot; content=&quot;1&quot; /&gt;&lt;style type=&quot;text/css&quot;&gt;
p, li { white-space: pre-wrap; }
&lt;/style&gt;&lt;/head&gt;&lt;body style=&quot; font-family:&apos;MS Shell Dlg 2&apos;; font-size:8.25pt; font-weight:400; font-style:normal;&quot;&gt;
&lt;p style=&quot; margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px; -qt-block-indent:0; text-indent:0px;&quot;&gt;&lt;span style=&quot; font-size:8pt;&quot;&gt;Load certificate file&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Load certificate file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The private key associated with the certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Private Key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Load private key file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Session Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The session name to be used for the connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Session Name</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>NewCertificateDialog</name>
    <message>
        <source>New Application Instance Certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Subject:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Common Name:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Organization:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Organization Unit:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locality:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>State:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Country:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>(Two letter code e.g. DE, US, ...)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OPC UA Information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Application URI:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Domain Name:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>IP Address (only if no DN is available)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificate Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>RSA Key Strength:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1024 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>2048 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificate Validity:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 Hour</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 Day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 Week</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 Month</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 Year</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>2 Years</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>3 Years</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>4 Years</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>5 Years</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You can protect the access to your private key with a password. Enabling this causes the kestrel to prompt you with a password dialog at startup.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password protect private key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password (repeat):</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 bits</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>NodeSearch</name>
    <message>
        <source>Cancelled.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>That is enough: there may be more.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QAbstractTableModel</name>
    <message>
        <source>Type cannot be displayed</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelAddressSpaceModel</name>
    <message>
        <source>The session is not connected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The node is on another server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server no longer has the namespace %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loading...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 children came before that.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No hierarchical reference leads from %1 to %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The tree begins at another node.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no %1 below %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is no NodeId and no browse path; one looks like i=85, nsu=urn:plant;s=Pump or /Objects/2:Plant.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Browse Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Class</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Variable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Method</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ObjectType</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>VariableType</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ReferenceType</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>DataType</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelAddressSpaceWidget</name>
    <message>
        <source>Columns</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Forward</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next Hit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous Hit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy NodeId</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy NodeId with Namespace URI</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy Browse Path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a name, or go to a NodeId or browse path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find or go to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Address space</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Looking for &quot;%1&quot; in %2 nodes: %3 found</source>
        <comment>2 and 3 are numbers</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; was not found in %2 nodes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot;: %2 of %3 hits in %4 nodes</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelAttributesModel</name>
    <message>
        <source>%1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Writing ...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Good: The server has taken the value.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not sent. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Attribute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last Write</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelAttributesWidget</name>
    <message>
        <source>Attributes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a node to see its attributes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Edit Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Refresh</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelCallDialog</name>
    <message>
        <source>Call</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Call %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelCallWidget</name>
    <message>
        <source>Input arguments</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output arguments</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>C&amp;all</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ca&amp;ncel Call</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Earlier calls</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Call the method (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Input arguments:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Earlier calls:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Output arguments:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The method cannot be called now.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This user may not call the method.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The arguments cannot be read. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This method takes no arguments.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This method gives nothing back.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s description of the arguments cannot be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Good, no outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>None yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose one to fill in its arguments</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no connection to the server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a method.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reading the arguments ...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not called: an argument is not valid, see there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Calling ...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancelled. Whether the server has carried it out is not known.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelCertificateManager</name>
    <message>
        <source>CertificateManager</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificate Not Found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The application certificate &apos;%1&apos; does not exist.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificates (*.der)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could Not Copy Certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The application certificate could not be copied to &apos;%1&apos;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not write %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not move certificate %1 to the trusted directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not move certificate %1 to the rejected directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete Trusted Certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do you really want to delete the selected certificate?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not delete certificate %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelCertificateModel</name>
    <message>
        <source>The certificate is not yet valid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate will expire soon</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate has expired</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Valid From</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Valid To</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Organization</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OrganizationUnit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locality</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>State</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Country</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AppURI</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>DomainName</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>IP</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filename</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Untrusted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trusted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Own Certificate</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelCertificateView</name>
    <message>
        <source>%1 (itself)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to %2 UTC</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not yet valid: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expired: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Of an unknown kind</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Subject</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Issuer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Validity</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Application URI</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Host names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signature</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Serial number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Thumbprint (SHA-1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Thumbprint (SHA-256)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDataViewModel</name>
    <message>
        <source>Nothing was sent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Writing...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Data type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source time (UTC)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>When the source took the value; the date is left out where it is today</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Server time (UTC)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>When the server got the value; the date is left out where it is today</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sampling</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Milliseconds between two looks of the server at the variable; -1 for the publishing interval, 0 for as fast as it can</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Revised sampling</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sampling interval that the server keeps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Publishing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Milliseconds between two notifications</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Revised publishing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The publishing interval that the server keeps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Queue size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Values that the server keeps for a notification</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Revised queue</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The queue size that the server has</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Overflows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How often the server dropped values because its queue was too short</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Gaps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How often notifications were lost, such as with the connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last write</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s answer to the last value written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 nodes were not added: a list holds %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is in the list already.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no %2.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDataViewWidget</name>
    <message>
        <source>NodeId, such as nsu=urn:plant;s=Pump</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NodeId of a variable to add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add this variable to the list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pause</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Let what is shown stand still; a recording goes on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Record...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write each value to a CSV file as it comes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the selected rows from the list (Del)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lists</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>List %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Values of %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name of the list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no NodeId. Examples: i=2258, ns=2;s=Pump, nsu=urn:plant;s=Pump</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Record to a CSV file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CSV files (*.csv)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recording stopped: %1. %2 lines are in %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recording: %1 lines in %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recorded: %1 lines in %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop recording</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reopen closed list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There are %1 lists, and no room for more.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The stored lists cannot be read; they are kept.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetArray</name>
    <message>
        <source>Append element</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove last element</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Writing values of this type
is currently not supported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Array</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is not enough memory to change the array.</source>
        <translation type="unfinished"></translation>
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
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>String</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Guid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opaque</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NamespaceUri:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ServerIndex:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NsIndex:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>IdentifierType:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Identifier:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetMatrix</name>
    <message>
        <source>Set Dimensions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Writing values of this type
is currently not supported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set Matrix Dimensions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter a comma separated list of dimensions (e.g. &apos;2,4,6&apos;):</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Format Error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The list of dimensions entered was not valid.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The matrix would have too many elements, or there is not enough memory for it. It was not changed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDialogWidgetNodeId</name>
    <message>
        <source>Numeric</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>String</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Guid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opaque</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NsIndex:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>IdentifierType:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Identifier:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDiscoveryJob</name>
    <message>
        <source>%1 is no URL of the form opc.tcp://host:port.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No computer answers at %1. Check the name, and the network.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No server listens at %1. Check that it runs, and its port.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server at %1 closed the connection.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 did not answer in time. Check that the server can be reached and is not overloaded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Discovery FindServers on %1 failed (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Discovery GetEndpoints on %1 failed (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The network cannot be searched: the service for that, Avahi, does not run on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The network could not be searched (%1).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>opc.tcp://%1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CoInitializeEx failed (0x%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CoCreateInstanceEx failed (0x%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>EnumClassesOfCategories failed (0x%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GetClassDetails failed (0x%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The OPC Classic servers of %1 cannot be listed (0x%2).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>/</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 does not tell its endpoints (%2).</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDiscoveryModel</name>
    <message>
        <source>Local</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Local Network</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Custom Discovery</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Custom Enum</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recently Used</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Item</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Configuration already existing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The &apos;Recently Used&apos; list already contains a server configuration with this name that differs from the current one. Do you want to overwrite it?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The settings hold more servers than can be read. They are left as they are.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelDiscoveryWidget</name>
    <message>
        <source>Only a URL that begins with &quot;%1&quot; is added.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rebrowse</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit Discovery URL</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit Discovery Url</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter the new Discovery Url:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter Url</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter the Url of a computer with discovery service running:</source>
        <translation type="unfinished"></translation>
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
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetBase</name>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value is too long to be shown here, where texts of up to %1 characters are. It stays as it is.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetByteString</name>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Load</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click again to enter value manually</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Conversion Error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The ByteString entered was not valid!</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetMatrix</name>
    <message>
        <source>This matrix type cannot be displayed</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetString</name>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Load</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click again to enter value manually</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelEditWidgetXmlElement</name>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Load</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click again to enter value manually</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelEndpointSettingsWidget</name>
    <message>
        <source>Open Server Certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificate (*.der *.pem)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Private Key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Private Key (*.pem)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelMatrixModel</name>
    <message>
        <source>[%1]</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelNewCertificateDlg</name>
    <message>
        <source>Not required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Present and valid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Missing or invalid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Two letters from A to Z.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Letters, digits and - . _ * only, with a comma between two names.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>IPv4 or IPv6 addresses in full, with a comma between two of them.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>At most %1 characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not create a certificate from these data</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelReferencesModel</name>
    <message>
        <source>%1 (inverse)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From this node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To this node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reference</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Target</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Class</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Type</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelReferencesWidget</name>
    <message>
        <source>References</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy NodeId</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelSession</name>
    <message>
        <source>Subscription %1 is lost, and made anew</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Subscription %1: %2 messages are missing after number %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Look into the server&apos;s log.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Looking up the host</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connecting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opening the secure channel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Creating the session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Activating the session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Being connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preparing the connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s random number is too short, or too long.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Answer the question in time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preparing the identity</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server offers no endpoint with this security: choose another policy or mode.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Make a certificate for this application: %1 holds none.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The private key of this application, %1, cannot be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificate and private key of this application do not match: make both anew.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 holds no certificate of the user.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The user&apos;s private key, %1, cannot be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The user&apos;s certificate and private key do not match.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Give the password of the private key.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking the server&apos;s certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The policy takes RSA keys of %1 to %2 bits; the server&apos;s has %3, this application&apos;s %4.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The rejected certificate cannot be filed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trust the server&apos;s certificate, if it is the right one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The trusted certificate cannot be filed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server gave no session.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The session&apos;s certificate is not the one that the endpoint announced: someone may be in between.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s signature is wrong: someone may be in between.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s endpoints are not those that it announced: someone may be in between. Ask for them again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The endpoint does not take this kind of identity.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The identity&apos;s security policy is not supported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The endpoint takes a user&apos;s certificate without security, which proves nothing: choose a secure one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password would travel in clear text: choose an endpoint that encrypts, or allow it explicitly.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server gives no certificate to encrypt the password with.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelSessionWidget</name>
    <message>
        <source>Disconnected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Looking up the host</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connecting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opening the secure channel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Creating the session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Activating the session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting to reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (announced as %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The best that is offered</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Certificate %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Anonymous</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>None yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 s ago</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 sent, %2 received</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>URL</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Security</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Session name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last answer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Requests</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bytes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Renewals of the channel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reconnects</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 failed: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server says: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Disconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reconnect Now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Steps of the connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last error</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelToolBox</name>
    <message>
        <source>Page_%1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelToolBoxPage</name>
    <message>
        <source>Show or hide this page</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelTrendWidget</name>
    <message>
        <source>There is no memory for the picture.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trend</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exported to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not exported to %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exporting to %1 ...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This trend was saved by a later version.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is no saved trend.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not restored: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Live	End</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show &amp;everything	0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom &amp;in	+</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom &amp;out	-</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reset scales</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Load &amp;history of this range</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Series</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Visible</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export as &amp;PNG...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export as PNG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pictures (*.png)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export as S&amp;VG...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export as SVG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drawings (*.svg)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export values as &amp;CSV...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export values as CSV</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tables (*.csv)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 d</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A trend takes %1 series.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>false</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>true</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The oldest values were dropped: %1 are kept.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Live, %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paused (End: live)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drop variables here, or paste them.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 points</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The history could not be read: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 values came from the history.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reading the history ...</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelTrustDialog</name>
    <message>
        <source>Trust the Server?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server&apos;s certificate is not trusted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Findings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What was found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compare the thumbprint with the one that the server itself shows. &quot;Always Trust&quot; files the certificate among the trusted ones.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy Details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Always Trust</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trust &amp;Once</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reject</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate of the server at %1 is not trusted.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetBase</name>
    <message>
        <source>The text was cut: this line takes %1 characters.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetByteString</name>
    <message>
        <source>Hexadecimal bytes</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetEnum</name>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetEnumFlags</name>
    <message>
        <source>Flags</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetGuid</name>
    <message>
        <source>Guid</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetLocalizedText</name>
    <message>
        <source>Locale</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Text</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetNodeId</name>
    <message>
        <source>Numeric</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>String</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Guid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opaque</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Namespace index</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Identifier type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Identifier</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetQualifiedName</name>
    <message>
        <source>Namespace index</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetStatusCode</name>
    <message>
        <source>Status code</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetValueRank</name>
    <message>
        <source>ScalarOrOneDimension (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Any (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Scalar (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OneOrMoreDimensions (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OneDimension (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TwoDimensions (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value rank</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetVariant</name>
    <message>
        <source>Null</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Boolean</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>SByte</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Byte</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Int16</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UInt16</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Int32</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UInt32</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Int64</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UInt64</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Float</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Double</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>String</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>DateTime</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Guid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ByteString</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>XmlElement</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NodeId</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ExpandedNodeId</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>StatusCode</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>QualifiedName</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LocalizedText</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Scalar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Array</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Matrix</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>DataType:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ArrayType:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QvelWidgetXmlElement</name>
    <message>
        <source>XML element</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Status</name>
    <message>
        <source>The values do not go together.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The method takes more arguments.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The node has no such attribute.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The connection, or the one behind the server, failed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The connection was lost before the server answered; whether it has carried this out is not known.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server cannot send the value in this encoding.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What was sent could not be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The device has a failure.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value cannot be sent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value is larger than one side takes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The range of elements is not one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There are no elements in this range.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server failed at it: see its log.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An argument was not accepted; it is marked.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This cannot be done in the state that the object is in.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The object has no such method.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server does not know this filter.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server has no connection to where the value comes from.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no value.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is no NodeId that the server takes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server has no such node, or no longer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The variable is not connected to where its value comes from.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The method cannot be called now.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server has not implemented this.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The attribute may not be read, or not by this user.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server does not support this.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The attribute may not be written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There was nothing to do.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is not enough memory.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value is out of the range of its type, or of the node.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The source of the value is out of service.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It was cancelled here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is more than the server takes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server needs something that it cannot get now.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The answer is larger than this application takes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server allows this over an encrypted connection only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sensor has a failure.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server does not do this at all.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no connection to the server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server does not know the session.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The session has ended.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server did not answer in time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The method takes fewer arguments.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server monitors no more values for anyone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is more at a time than the server takes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value is not of the data type that is asked for.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Something failed unexpectedly.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This user may not do that.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server has no value yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server does not take this combination of value, status and times.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Taken, but limited to what the node can hold.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Taken; the server goes on with it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value was put in by hand where it comes from.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is a value to begin with, from no source.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is the last known value; its source does not update it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sensor is at its limit or not calibrated.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fewer sources than needed are good.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server refused it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value is not certain.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not connected: this is as it was seen last.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TrendPicture</name>
    <message>
        <source>%1 more</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UaPkiFinding</name>
    <message>
        <source>The certificate is damaged or its signature is wrong. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate of an issuer is missing, so its origin is unproven. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The security policy does not allow the certificate. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Neither the certificate nor an issuer is trusted yet. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate is not valid at this time. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An issuer&apos;s certificate is not valid at this time. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate was made for another computer. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate was made for another application. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate was not made for this use. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An issuer may not issue certificates. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Whether the certificate was revoked is not known. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Whether an issuer&apos;s certificate was revoked is not known. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate was revoked. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The certificate of an issuer was revoked. %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UaPkiTrustStore</name>
    <message>
        <source>It cannot be decoded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Its signature is not that of the issuer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It names %1, not %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It holds &quot;%1&quot;, the server announces &quot;%2&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The issuer&apos;s list is out of date.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>

// Opens a session, signed and encrypted by Basic256Sha256, with a client's certificate and key, at
// a server that trusts this certificate alone. Prints what the server saw, as JSON.
import {
    certificateManager, commandLine, freePort, pkiFolder, serverOptions,
} from "./peer.mjs";
import { plantServer } from "./plantserver.mjs";
import { createHash } from "node:crypto";
import { readFileSync } from "node:fs";
import path from "node:path";
import { OPCUACertificateManager } from "node-opcua-certificate-manager";
import {
    AttributeIds, MessageSecurityMode, OPCUAClient, SecurityPolicy,
} from "node-opcua-client";

const { values, positionals: [certificateFile, privateKeyFile, applicationUri] } = commandLine(
    "secure-session.mjs [--pki FOLDER] [--untrusted] CERTIFICATE.der KEY.pem APPLICATION-URI",
    { pki: serverOptions.pki, untrusted: { type: "boolean" } }, 3);

const folder = pkiFolder(values.pki);
const trust = new OPCUACertificateManager({
    rootFolder: path.join(folder, "server"),
    automaticallyAcceptUnknownCertificate: false,
    disableFileWatchers: true,
});
await trust.initialize();
if (!values.untrusted) await trust.trustCertificate(readFileSync(certificateFile));

const server = await plantServer({ name: "Vault", port: await freePort(), certificates: trust });
let seen = null;
server.on("session_activated", ({ channel, clientDescription }) => {
    seen = {
        applicationUri: clientDescription.applicationUri,
        thumbprint: createHash("sha1").update(channel.clientCertificate).digest("hex"),
        securityMode: MessageSecurityMode[channel.securityMode],
        securityPolicy: channel.securityPolicy,
    };
});
await server.start();

const client = OPCUAClient.create({
    applicationUri,
    certificateFile,
    privateKeyFile,
    clientCertificateManager: await certificateManager(path.join(folder, "client")),
    connectionStrategy: { maxRetry: 0 },
    securityMode: MessageSecurityMode.SignAndEncrypt,
    securityPolicy: SecurityPolicy.Basic256Sha256,
});
let failure = null;
try {
    await client.connect(server.getEndpointUrl());
    const session = await client.createSession();
    const state = await session.read({ nodeId: "i=2259", attributeId: AttributeIds.Value });
    seen.serverState = state.value.value;
    await session.close();
    await client.disconnect();
} catch (error) {
    failure = error.message;
}
await server.shutdown();
process.stdout.write(`${JSON.stringify({ ...seen, failure })}\n`);
process.exit(0);

// A discovery server and three servers that register with it. Prints "READY url" once all are
// registered.
import {
    certificateManager, commandLine, freePort, pkiFolder, serve, serverOptions,
} from "./peer.mjs";
import { once } from "node:events";
import path from "node:path";
import { OPCUADiscoveryServer } from "node-opcua-server-discovery";
import { RegisterServerMethod } from "node-opcua-server";
import { plantServer } from "./plantserver.mjs";

const { values } = commandLine("discovery-server.mjs [--port N] [--pki FOLDER]", serverOptions);
const pki = pkiFolder(values.pki);
const discovery = new OPCUADiscoveryServer({
    port: values.port ? Number(values.port) : await freePort(),
    hostname: "127.0.0.1",
    serverCertificateManager: await certificateManager(path.join(pki, "discovery")),
    serverInfo: {
        applicationUri: "urn:localhost:kestrel:Discovery",
        productUri: "urn:kestrel:peer",
        applicationName: { text: "Discovery", locale: "en" },
    },
});
await discovery.start();
const url = discovery.getEndpointUrl();

// One after the other: FindServers lists them in the order in which they registered.
const servers = [];
for (const name of ["Boiler house", "Bottling line", "Water treatment"]) {
    const server = await plantServer({
        name,
        port: await freePort(),
        certificates: await certificateManager(path.join(pki, name)),
        registerServerMethod: RegisterServerMethod.LDS,
        discoveryServerEndpointUrl: url,
    });
    servers.push(server);
    const registered = once(server, "serverRegistered");
    await server.start();
    await registered;
}
if (discovery.registeredServerCount !== servers.length)
    throw new Error(`${discovery.registeredServerCount} of ${servers.length} servers registered`);
serve(url, async () => {
    for (const server of servers) await server.shutdown();
    await discovery.shutdown();
});

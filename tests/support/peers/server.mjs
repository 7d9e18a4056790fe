// An OPC UA server with node-opcua's seven default endpoints. Prints "READY url".
import {
    certificateManager, commandLine, freePort, pkiFolder, serve, serverOptions,
} from "./peer.mjs";
import { plantServer } from "./plantserver.mjs";

const { values } = commandLine("server.mjs [--port N] [--pki FOLDER]", serverOptions);
const server = await plantServer({
    name: "Peer",
    port: values.port ? Number(values.port) : await freePort(),
    certificates: await certificateManager(pkiFolder(values.pki)),
});
await server.start();
serve(server.getEndpointUrl(), () => server.shutdown());

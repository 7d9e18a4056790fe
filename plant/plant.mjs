// A plant to try OPC UA clients on, see README.md: plant.mjs [--port N] [--pki FOLDER] [--until-eof]
import { once } from "node:events";
import { existsSync } from "node:fs";
import path from "node:path";
import { parseArgs } from "node:util";
import {
    certificateManager, makeServer, MessageSecurityMode, nodesets, OPCUADiscoveryServer, OPCUAServer,
    RegisterServerMethod, SecurityPolicy, temporaryFolder,
} from "../tests/support/peers/opcua.mjs";
import { Area, userManager, users } from "./area.mjs";
import { build as buildBoilers } from "./boilers.mjs";
import { build as buildBottling } from "./bottling.mjs";
import { build as buildTanks } from "./tanks.mjs";

const areas = [["Boiler house", buildBoilers], ["Tank farm", buildTanks],
    ["Bottling line", buildBottling]];
const tick = 500; // ms
const begin = Date.now() - 3600e3; // of the history

const servers = [];
let clock = null;
async function end() {
    clearInterval(clock);
    const done = Promise.all(servers.map((server) => server.shutdown(0)));
    setTimeout(() => process.exit(0), 1000); // whatever a client makes of it
    await done.catch(() => {});
    process.exit(0);
}
process.once("SIGTERM", end).once("SIGINT", end);
process.on("uncaughtException", (error) => {
    console.error(`plant: ${error.code ? error.message : error.stack}`); // a mistake of the user's
    process.exit(1);
});

const { values } = parseArgs({ options: {
    port: { type: "string", default: "4840" }, pki: { type: "string" },
    "until-eof": { type: "boolean" },
} });
if (values["until-eof"]) process.stdin.resume().once("close", end);
const port = Number(values.port);
if (!(Number.isInteger(port) && port >= 0 && port < 65500))
    throw Object.assign(new Error("--port takes a number from 0 to 65499"), { code: "PORT" });
const folder = values.pki ? path.resolve(values.pki) : temporaryFolder();

async function start(Server, name, distance, options) {
    const id = name.replaceAll(" ", "");
    const certificates = await certificateManager(path.join(folder, id));
    const certificateFile = path.join(folder, id, "own/certs/plant.pem");
    if (!existsSync(certificateFile))
        await certificates.createSelfSignedCertificate({ dns: ["localhost"],
            applicationUri: `urn:localhost:kestrel:${id}`, subject: `/CN=${name}`, ip: ["127.0.0.1"],
            startDate: new Date(), validity: 3650, outputFile: certificateFile });
    const server = await makeServer(Server, name, certificates, { ...options, certificateFile,
        privateKeyFile: certificates.privateKey, hostname: "localhost", port: port && port + distance });
    servers.push(server);
    return server;
}

const discovery = await start(OPCUADiscoveryServer, "Plant discovery", 0);
await discovery.start();
const steps = [];
for (const [i, [name, build]] of areas.entries()) {
    const server = await start(OPCUAServer, name, 10 + i, {
        nodeset_filename: [nodesets.standard, path.join(import.meta.dirname, "plant.NodeSet2.xml")],
        securityPolicies: [SecurityPolicy.None, SecurityPolicy.Basic256Sha256,
            SecurityPolicy.Aes128_Sha256_RsaOaep, SecurityPolicy.Aes256_Sha256_RsaPss],
        securityModes: [MessageSecurityMode.None, MessageSecurityMode.Sign,
            MessageSecurityMode.SignAndEncrypt],
        serverCapabilities: { maxSessions: 100, operationLimits: { maxNodesPerRead: 1000,
            maxNodesPerBrowse: 1000, maxNodesPerWrite: 1000, maxMonitoredItemsPerCall: 1000 } },
        userManager,
        registerServerMethod: RegisterServerMethod.LDS,
        discoveryServerEndpointUrl: discovery.getEndpointUrl(),
    });
    await server.initialize();
    const area = new Area(server, new Date(begin));
    const step = build(area);
    steps.push((time) => {
        const seconds = Math.min((time - area.now) / 1000, 5);
        area.now = new Date(time);
        step(seconds);
    });
    const registered = once(server, "serverRegistered");
    await server.start();
    await registered;
}

for (let time = begin + 5000; time < Date.now(); time += 5000)
    for (const step of steps) step(time);
clock = setInterval(() => steps.forEach((step) => step(Date.now())), tick);

for (const [name, { password }] of Object.entries(users))
    process.stdout.write(`user ${name}, password ${password}\n`);
process.stdout.write(`READY ${servers.map((server) => server.getEndpointUrl()).join(" ")}\n`);

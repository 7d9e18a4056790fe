// Compares what `harrier --discover URL` prints with what a foreign client reads from the same
// foreign server.
//
// usage: node compare-discover.mjs HARRIER server|discovery-server
import { execFile, spawn } from "node:child_process";
import { once } from "node:events";
import { deepStrictEqual } from "node:assert";
import path from "node:path";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";
import { promisify } from "node:util";

const peers = path.join(path.dirname(fileURLToPath(import.meta.url)), "..", "support", "peers");
const deadline = 120000; // ms
const discoveryServer = 3; // an ApplicationType
const [harrier, peer, ...rest] = process.argv.slice(2);
if (!harrier || !["server", "discovery-server"].includes(peer) || rest.length > 0) {
    console.error("usage: node compare-discover.mjs HARRIER server|discovery-server");
    process.exit(2);
}

async function outputOf(program, args) {
    const options = { timeout: deadline, maxBuffer: 16 << 20 };
    return (await promisify(execFile)(program, args, options)).stdout;
}

/** One result a URL. */
async function foreignClient(...args) {
    const lines = await outputOf(process.execPath, [path.join(peers, "client.mjs"), ...args]);
    return lines.trimEnd().split("\n").map((line) => JSON.parse(line));
}

/** The server's URL, once it serves. */
async function ready(server) {
    for await (const line of createInterface({ input: server.stdout }))
        if (line.startsWith("READY ")) return line.slice("READY ".length);
    throw new Error(`${peer} did not start`);
}

// harrier prints the null String as the empty one, of an application's name the text alone, and
// what a client of opc.tcp can use.
const isTcp = (url) => url.startsWith("opc.tcp:");

function asPrinted(value) {
    if (value === null) return "";
    if (Array.isArray(value)) return value.map(asPrinted);
    if (typeof value !== "object") return value;
    return Object.fromEntries(Object.entries(value).map(([name, field]) =>
        [name, asPrinted(name === "applicationName" ? field.text : field)]));
}

async function expectedServers(url) {
    const [applications] = await foreignClient("--find-servers", url);
    const servers = applications
        .filter(({ applicationType }) => applicationType !== discoveryServer)
        .flatMap(({ applicationName, discoveryUrls }) => discoveryUrls.filter(isTcp)
            .map((discoveryUrl) => ({ name: applicationName.text, url: discoveryUrl })));
    const endpoints = await foreignClient(...servers.map((server) => server.url));
    return servers.map((server, i) => ({
        type: "server",
        ...server,
        children: asPrinted(endpoints[i].filter(({ endpointUrl }) => isTcp(endpointUrl))),
    }));
}

/** A server as printed, without what harrier adds to the endpoints of a server for its tree. */
function printedServer(server) {
    const children = server.children.map(({ type, name, children, ...endpoint }) => {
        deepStrictEqual([type, children, typeof name], ["endpoint", [], "string"]);
        return endpoint;
    });
    return { ...server, children };
}

const server = spawn(process.execPath, [path.join(peers, `${peer}.mjs`)],
                     { stdio: ["pipe", "pipe", "inherit"] });
const ended = once(server, "exit");
try {
    const url = await ready(server);
    const expected = await expectedServers(url);
    const { nodes } = JSON.parse(await outputOf(harrier, ["--discover", url]));
    deepStrictEqual(nodes.map(({ type, url }) => ({ type, url })), [{ type: "discovery", url }]);
    deepStrictEqual(nodes[0].children.map(printedServer), expected);
    const count = expected.reduce((sum, { children }) => sum + children.length, 0);
    if (count === 0) throw new Error("there was nothing to compare");
    console.log(`${expected.length} servers and ${count} endpoints agree`);
} finally {
    server.stdin.end();
    await ended;
}

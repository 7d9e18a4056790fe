// OPC UA servers and clients of another make: peers.mjs COMMAND [ARGUMENT...], see README.md.
import { createHash } from "node:crypto";
import { readFileSync } from "node:fs";
import path from "node:path";
import {
    AttributeIds, certificateManager, makeServer, MessageSecurityMode, OPCUAClient, OPCUAServer,
    SecurityPolicy, temporaryFolder,
} from "./opcua.mjs";
import { ApplicationType } from "node-opcua-client";

const folder = temporaryFolder();
const clientCertificates = await certificateManager(path.join(folder, "client"));

// What `use` gives of a client that is connected.
async function connected(url, use, options) {
    const client = OPCUAClient.create({
        endpointMustExist: false,
        connectionStrategy: { maxRetry: 0 },
        clientCertificateManager: clientCertificates,
        ...options,
    });
    await client.connect(url);
    const result = await use(client);
    await client.disconnect();
    return result;
}

const endpointsAt = (endpointUrl) =>
    connected(endpointUrl, (client) => client.getEndpoints({ endpointUrl }));

// As harrier prints it: what is null as "", bytes in hexadecimal, of an application's name the text.
function printed(value, name) {
    if (value === null || value === undefined) return "";
    if (Buffer.isBuffer(value)) return value.toString("hex");
    if (Array.isArray(value)) return value.map((element) => printed(element));
    if (name === "applicationName") return printed(value.text);
    if (typeof value !== "object") return value;
    return Object.fromEntries(Object.keys(value).map((key) => [key, printed(value[key], key)]));
}

const print = (value) => process.stdout.write(`${JSON.stringify(value)}\n`);

const commands = {
    async discover(endpointUrl) {
        const all = await connected(endpointUrl, (client) => client.findServers({ endpointUrl }));
        const servers = all.filter((one) => one.applicationType !== ApplicationType.DiscoveryServer);
        print(await Promise.all(servers.map(async ({ applicationName, discoveryUrls: [url] }) => ({
            type: "server",
            name: applicationName.text,
            url,
            children: printed(await endpointsAt(url)),
        }))));
    },

    async time(url, rounds) {
        const times = [];
        for (let i = -10; i < Number(rounds); ++i) {
            const begin = performance.now();
            if ((await endpointsAt(url)).length === 0) throw new Error("there are no endpoints");
            if (i >= 0) times.push(performance.now() - begin);
        }
        print({ medianMs: times.sort((a, b) => a - b)[times.length >> 1] });
    },

    async session(certificateFile, privateKeyFile, applicationUri, trusted) {
        const trust = await certificateManager(path.join(folder, "Vault"), false);
        if (trusted === "trusted") await trust.trustCertificate(readFileSync(certificateFile));
        const server = await makeServer(OPCUAServer, "Vault", trust);
        await server.start();
        let seen = null;
        server.on("session_activated", ({ channel, clientDescription }) => {
            seen = {
                applicationUri: clientDescription.applicationUri,
                thumbprint: createHash("sha1").update(channel.clientCertificate).digest("hex"),
                securityMode: MessageSecurityMode[channel.securityMode],
                securityPolicy: channel.securityPolicy,
            };
        });
        let failure = null;
        try {
            await connected(server.getEndpointUrl(), async (client) => {
                const session = await client.createSession();
                const state = await session.read({ nodeId: "i=2259", attributeId: AttributeIds.Value });
                seen.serverState = state.value.value;
                await session.close();
            }, {
                applicationUri,
                certificateFile,
                privateKeyFile,
                securityMode: MessageSecurityMode.SignAndEncrypt,
                securityPolicy: SecurityPolicy.Basic256Sha256,
            });
        } catch (error) {
            failure = error.message;
        }
        await server.shutdown();
        print({ ...seen, failure });
    },
};

const [command, ...args] = process.argv.slice(2);
if (!Object.hasOwn(commands, command))
    throw new Error(`the commands are ${Object.keys(commands).join(", ")}`);
await commands[command](...args);
process.stdout.write("", () => process.exit(0)); // once a pipe has taken all of it

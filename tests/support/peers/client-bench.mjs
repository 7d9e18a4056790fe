// Prints as JSON the median time of connect, GetEndpoints and close with node-opcua's client.
import { certificateManager, commandLine, pkiFolder } from "./peer.mjs";
import { performance } from "node:perf_hooks";
import { OPCUAClient } from "node-opcua-client";

const { positionals: [url, count] } = commandLine("client-bench.mjs URL N", {}, 2);
const rounds = Number(count);
if (!(Number.isInteger(rounds) && rounds > 0)) throw new Error("N must be a positive number");
const clientCertificateManager = await certificateManager(pkiFolder());

async function round() {
    const begin = performance.now();
    const client = OPCUAClient.create({
        endpointMustExist: false,
        connectionStrategy: { maxRetry: 0 },
        clientCertificateManager,
    });
    await client.connect(url);
    const endpoints = await client.getEndpoints({ endpointUrl: url });
    await client.disconnect();
    if (endpoints.length === 0) throw new Error("the server has no endpoints");
    return performance.now() - begin;
}

const warmUp = 10;
for (let i = 0; i < warmUp; ++i) await round();
const times = [];
for (let i = 0; i < rounds; ++i) times.push(await round());
times.sort((a, b) => a - b);
const middle = rounds >> 1;
const median = rounds % 2 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
process.stdout.write(`${JSON.stringify({ client: "node-opcua", rounds, medianMs: median })}\n`);
process.exit(0);

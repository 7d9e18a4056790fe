// What node-opcua's client takes for the work that bench_session does:
//   nodeclient.mjs URL POLICY MODE SCENARIO ROUNDS
// Prints {"cpu": milliseconds of the processor}. Runs with the packages of the peers, whose folder
// is in the environment as PEERS.
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import path from "node:path";

const require = createRequire(path.join(process.env.PEERS, "package.json"));
const { OPCUACertificateManager } = require("node-opcua-certificate-manager");
const { AttributeIds, BrowseDirection, ClientMonitoredItemGroup, ClientSubscription,
    MessageSecurityMode, OPCUAClient, SecurityPolicy, TimestampsToReturn } =
    require("node-opcua-client");

const [url, policy, mode, scenario, rounds] = process.argv.slice(2);
console.log = console.error; // standard output carries the result only
const folder = mkdtempSync(path.join(tmpdir(), "kestrel-bench-"));
process.on("exit", () => rmSync(folder, { recursive: true, force: true }));
const clientCertificateManager = new OPCUACertificateManager({
    rootFolder: folder, automaticallyAcceptUnknownCertificate: true, disableFileWatchers: true });
await clientCertificateManager.initialize();

const create = () => OPCUAClient.create({
    endpointMustExist: false,
    connectionStrategy: { maxRetry: 0 },
    clientCertificateManager,
    securityPolicy: SecurityPolicy[policy],
    securityMode: MessageSecurityMode[mode],
});
const valueOf = (name) => ({ nodeId: `ns=1;s=${name}`, attributeId: AttributeIds.Value });
const check = (isRight, what) => { if (!isRight) throw new Error(`${scenario}: ${what}`); };
const tags = Array.from({ length: 1000 }, (_, i) => valueOf(`Tag${i}`));

const scenarios = {
    async read(session) {
        const values = await session.read(tags);
        check(values.length === 1000 && values[999].value.value === 999, "wrong values");
    },
    async one(session) {
        const values = await Promise.all(tags.map((tag) => session.read(tag)));
        check(values.every(({ value }, i) => value.value === i), "a wrong value");
    },
    async sequence(session) {
        for (let i = 0; i < 1000; ++i)
            check((await session.read(tags[i])).value.value === i, "a wrong value");
    },
    async browse(session) {
        let result = await session.browse({ nodeId: "ns=1;s=Many", referenceTypeId: "i=33",
            browseDirection: BrowseDirection.Forward, includeSubtypes: true, resultMask: 63 });
        let count = result.references.length;
        while (result.continuationPoint?.length) {
            result = await session.browseNext(result.continuationPoint, false);
            count += result.references.length;
        }
        check(count === 10000, `${count} children`);
    },
    async connect() {
        const client = create();
        await client.connect(url);
        const session = await client.createSession();
        check((await session.read(tags[7])).value.value === 7, "a wrong value");
        await session.close();
        await client.disconnect();
    },
};

const used = () => { const { user, system } = process.cpuUsage(); return (user + system) / 1000; };
let cpu = 0;
async function measure(work) {
    await work(); // once to warm up
    const before = used();
    for (let i = 0; i < Number(rounds); ++i) await work();
    cpu = used() - before;
}

if (scenario === "connect") {
    await measure(scenarios.connect);
} else {
    const client = create();
    await client.connect(url);
    const session = await client.createSession();
    if (scenario === "watch") {
        const subscription = ClientSubscription.create(session, {
            requestedPublishingInterval: 100, requestedLifetimeCount: 1200,
            requestedMaxKeepAliveCount: 10, publishingEnabled: true });
        await once(subscription, "started");
        const group = ClientMonitoredItemGroup.create(subscription,
            Array.from({ length: 1000 }, (_, i) => valueOf(`Item${i}`)),
            { samplingInterval: 0, queueSize: 10, discardOldest: true }, TimestampsToReturn.Both);
        let count = 0;
        group.on("changed", () => ++count);
        await new Promise((done) => setTimeout(done, 2000));
        count = 0;
        const before = used();
        await new Promise((done) => setTimeout(done, Number(rounds) * 1000));
        cpu = used() - before;
        check(count >= Number(rounds) * 9000, `${count} values`);
        await subscription.terminate();
    } else {
        await measure(() => scenarios[scenario](session));
    }
    await session.close();
    await client.disconnect();
}
process.stdout.write(`${JSON.stringify({ cpu })}\n`);
process.exit(0);

// All that the plant promises is there for a foreign client, and nothing of it stays.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, readdirSync, rmSync } from "node:fs";
import path from "node:path";
import { createInterface } from "node:readline";
import { after, test } from "node:test";
import { setTimeout as sleep } from "node:timers/promises";
import { users } from "../../plant/area.mjs";
import {
    AttributeIds, certificateManager, constructEventFilter, DataType, OPCUAClient, samples,
    temporaryFolder, UserTokenType, VariantArrayType,
} from "../support/peers/opcua.mjs";

const plantFile = path.join(import.meta.dirname, "../../plant/plant.mjs");
const folder = temporaryFolder();
const plants = [];
after(() => plants.forEach((plant) => plant.kill("SIGKILL")));

async function startPlant(...options) {
    const plant = spawn(process.execPath, [plantFile, "--port", "0", ...options],
        { env: { ...process.env, TMPDIR: folder }, stdio: ["pipe", "pipe", "inherit"] });
    plants.push(plant);
    for await (const line of createInterface({ input: plant.stdout }))
        if (line.startsWith("READY ")) return [plant, ...line.split(" ").slice(1)];
    throw new Error("the plant does not start");
}

const clientCertificateManager = await certificateManager(path.join(folder, "client"));
async function connect(url, userName) {
    const client = OPCUAClient.create({ endpointMustExist: false, connectionStrategy: { maxRetry: 0 },
        clientCertificateManager });
    await client.connect(url);
    const session = await client.createSession(userName
        ? { type: UserTokenType.UserName, userName, password: users[userName].password } : undefined);
    after(() => client.disconnect().catch(() => {}));
    return Object.assign(session, {
        valueOf: async (id) => (await session.read({ nodeId: `ns=1;s=${id}` })).value.value,
        send: async (id, value) => (await session.write({ nodeId: `ns=1;s=${id}`,
            attributeId: AttributeIds.Value, value: { value } })).name,
        invoke: (id, ...inputArguments) => session.call({ objectId: `ns=1;s=${id.split(".")[0]}`,
            methodId: `ns=1;s=${id}`, inputArguments }),
        children: async (nodeId) => {
            let result = await session.browse({ nodeId, referenceTypeId: "HierarchicalReferences",
                includeSubtypes: true, resultMask: 63 });
            const all = [...result.references];
            while (result.continuationPoint?.length) {
                result = await session.browseNext(result.continuationPoint, false);
                all.push(...result.references);
            }
            return all;
        },
    });
}

async function until(condition) {
    for (let i = 0; i < 300; ++i, await sleep(100)) if (await condition()) return;
    assert.fail(`${condition} does not come true`);
}
const double = (value) => ({ dataType: DataType.Double, value });

test("the plant", { timeout: 120000 }, async () => {
    const [plant, discovery, ...urls] = await startPlant();
    assert.equal(urls.length, 3);
    const [boilers, tanks, line] = await Promise.all(urls.map((url) => connect(url, "engineer")));
    const operator = await connect(urls[2], "operator");
    const guest = await connect(urls[0]);
    const found = await OPCUAClient.create({ clientCertificateManager });
    await found.connect(discovery);
    assert.deepEqual((await found.findServers()).map(({ applicationName }) => applicationName.text),
        ["Plant discovery", "Boiler house", "Tank farm", "Bottling line"]);
    await found.disconnect();

    // Every type, writable for those who may.
    const ids = (await boilers.children("ns=1;s=Every type")).map(({ nodeId }) => nodeId.value);
    assert.equal(ids.length, 3 * (Object.keys(samples).length + 2) - 1);
    for (const id of ids) {
        const { value } = await boilers.read({ nodeId: `ns=1;s=${id}` });
        assert.equal(await guest.send(id, value), "BadUserAccessDenied");
        if (value.arrayType === VariantArrayType.Array) value.value = value.value.slice(1);
        if (id === "ScalarInt32") value.value = 7;
        assert.equal(await boilers.send(id, value), "Good", id);
        assert.deepEqual((await guest.read({ nodeId: `ns=1;s=${id}` })).value, value);
    }

    // Quantities that move, have units and history, and follow what is set.
    const warm = "Boiler 1.Temperature";
    const properties = (await boilers.children(`ns=1;s=${warm}`)).map(({ browseName }) => browseName.name);
    for (const name of ["EngineeringUnits", "EURange", "HA Configuration"])
        assert.ok(properties.includes(name), `${name} of ${properties}`);
    const now = Date.now();
    const { historyData } = await boilers.readHistoryValue(`ns=1;s=${warm}`, new Date(now - 3.6e6), new Date(now));
    assert.ok(historyData.dataValues.length > 700);
    assert.equal((await tanks.children("ns=1;s=Tags")).length, 10000);
    assert.equal(await tanks.send("Raw water.Valve", double(200)), "BadOutOfRange");
    assert.equal(await tanks.send("Raw water.Valve", double(0)), "Good");
    await until(async () => await tanks.valueOf("Raw water.Outflow") === 0);
    const celsius = await boilers.valueOf(warm);
    await until(async () => await boilers.valueOf(warm) !== celsius);

    // Methods with their arguments, for those who may, and the alarm that one of them raises.
    const recipe = [{ dataType: DataType.String, value: "Cola" }, { dataType: DataType.Int32, value: 330 },
        { dataType: DataType.UInt32, value: 9000 },
        { dataType: DataType.Double, arrayType: VariantArrayType.Array, value: [300, 30] }];
    assert.equal((await operator.invoke("Line.SetRecipe", ...recipe)).statusCode.name, "BadUserAccessDenied");
    const wrong = await line.invoke("Line.SetRecipe", recipe[0], { ...recipe[1], value: 5 }, recipe[2], recipe[3]);
    assert.deepEqual(wrong.inputArgumentResults.map(({ name }) => name), ["Good", "BadOutOfRange", "Good", "Good"]);
    const { outputArguments: [{ value: made }] } = await line.invoke("Line.SetRecipe", ...recipe);
    assert.deepEqual([made.name, made.bottle, made.doses[1].millilitres], ["Cola", 330, 30]);
    assert.deepEqual((await line.valueOf("Line.Recipe")).toJSON(), made.toJSON());
    assert.equal((await line.valueOf("Line.RecipeBook")).length, 3);
    const subscription = await line.createSubscription2({ requestedPublishingInterval: 100,
        requestedLifetimeCount: 1000, requestedMaxKeepAliveCount: 10, publishingEnabled: true });
    const item = await subscription.monitor({ nodeId: "i=2253", attributeId: AttributeIds.EventNotifier },
        { samplingInterval: 0, queueSize: 100, discardOldest: false,
            filter: constructEventFilter(["SourceName", "ConditionName"]) }, 2);
    const conditions = [];
    item.on("changed", (fields) => conditions.push(fields[1].value));
    await operator.invoke("Line.ClearJam");
    await until(async () => await line.valueOf("Line.State") === 2);
    await operator.invoke("Line.Jam");
    await until(() => conditions.includes("JamAlarm"));
    assert.equal(await line.valueOf("Line.State"), 4);

    // It ends on a signal, though others are connected, and with its standard input.
    const [other] = await startPlant("--until-eof");
    const ends = plants.map((one) => once(one, "exit"));
    plant.kill("SIGTERM");
    other.stdin.end();
    assert.deepEqual(await Promise.all(ends), [[0, null], [0, null]]);
    rmSync(path.join(folder, "client"), { recursive: true });
    assert.deepEqual(readdirSync(folder), []);
});

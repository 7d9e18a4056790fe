// An OPC UA server for sessions: every security policy and identity, and an address space with
// values of every built-in type, folders with many children, a method, events and history.
// Prints "READY url". User: "operator" with the password "walnut", or any certificate. With
// --conformance it serves node-opcua's address space for conformance tests, too.
import { createHash } from "node:crypto";
import { once } from "node:events";
import { parseArgs } from "node:util";
import {
    addAggregateSupport, addEveryType, AttributeIds, certificateManager, coerceNodeId, DataType,
    installAggregateConfigurationOptions, makeServer, MessageSecurityMode, nodesets, OPCUAServer,
    samples, SecurityPolicy, StatusCodes, temporaryFolder, UserTokenPolicy, UserTokenType,
    VariantArrayType,
} from "./opcua.mjs";
import { standardUnits } from "node-opcua-data-access";
import { build_address_space_for_conformance_testing } from
    "node-opcua-address-space-for-conformance-testing";

const { values } = parseArgs({ options: {
    port: { type: "string" }, pki: { type: "string" }, children: { type: "string" },
    items: { type: "string" }, period: { type: "string" }, lifetime: { type: "string" },
    operations: { type: "string" }, huge: { type: "boolean" },
    long: { type: "boolean" },
    certificate: { type: "string" }, key: { type: "string" }, conformance: { type: "boolean" },
    hostname: { type: "string" }, namespaces: { type: "string" },
} });

const certificates = await certificateManager(values.pki ?? temporaryFolder());
const server = await makeServer(OPCUAServer, "Session server", certificates, {
    port: values.port,
    ...(values.key && { certificateFile: values.certificate, privateKeyFile: values.key }),
    hostname: values.hostname ?? "127.0.0.1", // that it announces
    nodeset_filename: [nodesets.standard],
    securityPolicies: [SecurityPolicy.None, SecurityPolicy.Basic128Rsa15, SecurityPolicy.Basic256,
        SecurityPolicy.Basic256Sha256, SecurityPolicy.Aes128_Sha256_RsaOaep, SecurityPolicy.Aes256_Sha256_RsaPss],
    securityModes: [MessageSecurityMode.None, MessageSecurityMode.Sign, MessageSecurityMode.SignAndEncrypt],
    allowAnonymous: true,
    defaultSecureTokenLifetime: values.lifetime ? Number(values.lifetime) : 600000,
    maxConnectionsPerEndpoint: 50,
    serverCapabilities: { maxSessions: 200, maxBrowseContinuationPoints: 10,
        operationLimits: { maxNodesPerRead: Number(values.operations ?? 500), maxNodesPerBrowse: 100, maxNodesPerWrite: 200,
            maxNodesPerMethodCall: 10, maxMonitoredItemsPerCall: Number(values.operations ?? 300) } },
    userManager: { isValidUser: (user, password) => user === "operator" ? password === "walnut"
        : user === "keeper" && password === createHash("sha256").update(user).digest("hex") },
});

await server.initialize();
for (const endpoint of server.endpoints)
    for (const { securityMode, userIdentityTokens } of endpoint.endpointDescriptions())
        if (securityMode === MessageSecurityMode.None) // a password in clear text, too
            userIdentityTokens.push(new UserTokenPolicy({ policyId: "username_unsecure", tokenType: UserTokenType.UserName }));
const space = server.engine.addressSpace;
const own = space.getOwnNamespace();
const objects = space.rootFolder.objects;
const types = own.addFolder(objects, { browseName: "Types", nodeId: "s=Types" });
addEveryType(own, types, samples);
const many = own.addFolder(objects, { browseName: "Many", nodeId: "s=Many" });
for (let i = 0; i < Number(values.children ?? 10000); ++i)
    own.addVariable({ componentOf: many, browseName: `Tag${i}`, nodeId: `s=Tag${i}`, dataType: "Double",
        value: { dataType: DataType.Double, value: i } });

const moving = own.addFolder(objects, { browseName: "Moving", nodeId: "s=Moving" });
const items = Array.from({ length: Number(values.items ?? 1000) }, (_, i) => own.addVariable({
    componentOf: moving, browseName: `Item${i}`, nodeId: `s=Item${i}`, dataType: "Double",
    minimumSamplingInterval: 0, value: { dataType: DataType.Double, value: 0 } }));
// Further namespaces, in an order to choose, with a node each.
for (const uri of (values.namespaces ?? "urn:first,urn:second").split(",")) {
    const further = space.registerNamespace(uri);
    items.push(further.addVariable({ componentOf: moving, browseName: uri, nodeId: "s=Further", dataType: "Double",
        minimumSamplingInterval: 0, value: { dataType: DataType.Double, value: 0 } }));
}
let tick = 0;
const moves = setInterval(() => {
    ++tick;
    for (const item of items) item.setValueFromSource({ dataType: DataType.Double, value: tick });
}, Number(values.period ?? 100)).unref();
own.addVariable({ componentOf: moving, browseName: "Big", nodeId: "s=Big", dataType: "Double",
    valueRank: 1, arrayDimensions: [0],
    value: { dataType: DataType.Double, arrayType: VariantArrayType.Array, value: new Float64Array(100000) } });

if (values.huge)
    own.addVariable({ componentOf: moving, browseName: "Huge", nodeId: "s=Huge", dataType: "Double",
        valueRank: 1, arrayDimensions: [0], value: { dataType: DataType.Double,
            arrayType: VariantArrayType.Array, value: new Float64Array(8000000) } });
if (values.long)
    own.addVariable({ componentOf: moving, browseName: "Long", nodeId: "s=Long", dataType: "Int16",
        valueRank: 1, arrayDimensions: [0],
        value: { dataType: DataType.Int16, arrayType: VariantArrayType.Array, value: new Int16Array(10000000) } });

const machine = own.addObject({ organizedBy: objects, browseName: "Machine", nodeId: "s=Machine", eventNotifier: 1 });
const method = own.addMethod(machine, { browseName: "Add", nodeId: "s=Add",
    inputArguments: [{ name: "a", dataType: DataType.Double }, { name: "b", dataType: DataType.Double }],
    outputArguments: [{ name: "sum", dataType: DataType.Double }] });
method.bindMethod(([a, b], context, callback) => callback(null, { statusCode: StatusCodes.Good,
    outputArguments: [{ dataType: DataType.Double, value: a.value + b.value }] }));
// A value of another type than is declared, and attributes that may be written, but for one.
own.addVariable({ componentOf: machine, browseName: "Odd", nodeId: "s=Odd", dataType: "String",
    value: { dataType: DataType.String, value: "forty" } }).dataType = coerceNodeId("i=11");
const named = own.addVariable({ componentOf: machine, browseName: "Named", nodeId: "s=Named", dataType: "Double",
    value: { dataType: DataType.Double, value: 0 } });
named.getWriteMask = named.getUserWriteMask = () => 0x60; // Description, DisplayName
named.writeAttribute = (context, { attributeId, value }, callback) => {
    if (attributeId !== AttributeIds.DisplayName) return callback(null, StatusCodes.BadNotWritable);
    named.setDisplayName(value.value.value);
    callback(null, StatusCodes.Good);
};
// Arguments of other kinds; it takes its time, as asked, but no negative one.
const sort = own.addMethod(machine, { browseName: "Sort", nodeId: "s=Sort",
    inputArguments: [
        { name: "numbers", dataType: DataType.Int32, valueRank: 1, description: { text: "in any order" } },
        { name: "state", dataType: coerceNodeId("i=852") }, { name: "delay", dataType: DataType.Double },
        { name: "any", dataType: DataType.Variant }],
    outputArguments: [{ name: "sorted", dataType: DataType.Int32, valueRank: 1 },
        { name: "state", dataType: coerceNodeId("i=852") }, { name: "any", dataType: DataType.Variant }] });
sort.bindMethod(([numbers, state, delay, any], context, callback) => delay.value < 0
    ? callback(null, { statusCode: StatusCodes.BadInvalidArgument, inputArgumentResults:
        [StatusCodes.Good, StatusCodes.Good, StatusCodes.BadOutOfRange, StatusCodes.Good] })
    : setTimeout(() => callback(null, {
        statusCode: StatusCodes.Good, outputArguments: [{ dataType: DataType.Int32, arrayType: VariantArrayType.Array,
            value: numbers.value.slice().sort((a, b) => a - b) }, state, any] }), delay.value));
const events = setInterval(() => space.rootFolder.objects.server.raiseEvent("BaseEventType", {
    message: { dataType: DataType.LocalizedText, value: { text: `tick ${tick}` } },
    severity: { dataType: DataType.UInt16, value: 100 } }), 500).unref();

const temperature = own.addAnalogDataItem({ componentOf: machine, browseName: "Temperature", nodeId: "s=Temperature", dataType: "Double",
    engineeringUnitsRange: { low: -10, high: 110 }, engineeringUnits: standardUnits.degree_celsius,
    value: { dataType: DataType.Double, value: 20 } });
own.addMultiStateDiscrete({ componentOf: machine, browseName: "Mode", nodeId: "s=Mode",
    enumStrings: ["Off", "Manual", "Automatic"], value: 1 });
own.addVariable({ componentOf: machine, browseName: "Running", nodeId: "s=Running", dataType: "Boolean",
    accessLevel: "CurrentRead | CurrentWrite | HistoryRead", // which is not true
    value: { dataType: DataType.Boolean, value: true } });
const historic = own.addVariable({ componentOf: machine, browseName: "Historic", nodeId: "s=Historic",
    dataType: "Double", value: { dataType: DataType.Double, value: 0 } });
addAggregateSupport(space);
space.installHistoricalDataNode(historic, { maxOnlineValues: 5000 });
space.installHistoricalDataNode(temperature, { maxOnlineValues: 5000 });
installAggregateConfigurationOptions(historic, { stepped: true });
for (let i = 0; i < 3000; ++i)
    historic.setValueFromSource({ dataType: DataType.Double, value: i }, StatusCodes.Good, new Date(Date.UTC(2024, 0, 1, 0, 0, i)));

if (values.conformance) await build_address_space_for_conformance_testing(space);

await server.start();
process.stdout.write(`READY ${server.getEndpointUrl()}\n`);
await once(process.stdin.resume(), "end");
clearInterval(moves);
clearInterval(events);
await server.shutdown();
process.exit(0);

// An OPC UA server for sessions: every security policy and identity, and an address space with
// values of every built-in type, folders with many children, a method, events and history.
// Prints "READY url". User: "operator" with the password "walnut", or any certificate. With
// --conformance it serves node-opcua's address space for conformance tests, too.
import "./loopback.mjs";

import { createHash } from "node:crypto";
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import net from "node:net";
import { tmpdir } from "node:os";
import path from "node:path";
import { parseArgs } from "node:util";
import { build_address_space_for_conformance_testing } from
    "node-opcua-address-space-for-conformance-testing";
import { addAggregateSupport, installAggregateConfigurationOptions } from "node-opcua-aggregates";
import { OPCUACertificateManager } from "node-opcua-certificate-manager";
import { OPCUAServer } from "node-opcua-server";
import { DataType, Variant, VariantArrayType } from "node-opcua-variant";
import { StatusCodes } from "node-opcua-status-code";
import { coerceNodeId, ExpandedNodeId, NodeIdType } from "node-opcua-nodeid";
import { LocalizedText, QualifiedName } from "node-opcua-data-model";
import { UserTokenPolicy, UserTokenType } from "node-opcua-types";
import { SecurityPolicy, MessageSecurityMode } from "node-opcua-secure-channel";
import { nodesets } from "node-opcua-nodesets";

const { values } = parseArgs({ options: {
    port: { type: "string" }, pki: { type: "string" }, children: { type: "string" },
    items: { type: "string" }, period: { type: "string" }, lifetime: { type: "string" },
    operations: { type: "string" }, huge: { type: "boolean" },
    certificate: { type: "string" }, key: { type: "string" }, conformance: { type: "boolean" },
    hostname: { type: "string" }, namespaces: { type: "string" },
} });

async function freePort() {
    const probe = net.createServer().listen({ port: 0 });
    await once(probe, "listening");
    const { port } = probe.address();
    await new Promise((done) => probe.close(done));
    return port;
}

let folder = values.pki;
if (!folder) {
    folder = mkdtempSync(path.join(tmpdir(), "kestrel-peer-"));
    process.on("exit", () => rmSync(folder, { recursive: true, force: true }));
}
const certificates = new OPCUACertificateManager({
    rootFolder: folder,
    automaticallyAcceptUnknownCertificate: true,
    disableFileWatchers: true,
});
await certificates.initialize();

const samples = {
    Boolean: [true, false], SByte: [-128, 127], Byte: [0, 255], Int16: [-32768, 32767],
    UInt16: [0, 65535], Int32: [-2147483648, 5], UInt32: [0, 4294967295],
    Int64: [[0xffffffff, 0xfffffffb], [0, 1]], UInt64: [[0xffffffff, 0xffffffff], [0, 7]],
    Float: [0.1, -1.5], Double: [0.1, Infinity], String: ["Hot\u6c34", ""],
    DateTime: [new Date("2024-02-29T13:14:15.123Z"), new Date("1999-12-31T23:59:59Z")],
    Guid: ["72962B91-FA75-4AE6-8D28-B404DC7DAF63", "00000000-0000-0000-0000-000000000000"],
    ByteString: [Buffer.from([0, 1, 2]), Buffer.alloc(0)], XmlElement: ["<a/>", "<b>1</b>"],
    NodeId: [coerceNodeId("ns=1;s=x"), coerceNodeId("i=85")],
    ExpandedNodeId: [new ExpandedNodeId(NodeIdType.NUMERIC, 85, 0, "urn:x", 0), new ExpandedNodeId(NodeIdType.STRING, "y", 1)],
    StatusCode: [StatusCodes.BadNodeIdUnknown, StatusCodes.Good],
    QualifiedName: [new QualifiedName({ namespaceIndex: 1, name: "q" }), new QualifiedName({ name: "r" })],
    LocalizedText: [new LocalizedText({ locale: "de", text: "t" }), new LocalizedText({ text: "u" })],
};

const server = new OPCUAServer({
    port: values.port ? Number(values.port) : await freePort(),
    ...(values.key && { certificateFile: values.certificate, privateKeyFile: values.key }),
    hostname: values.hostname ?? "127.0.0.1", // that it announces
    serverCertificateManager: certificates,
    userCertificateManager: certificates,
    serverInfo: {
        applicationUri: "urn:localhost:kestrel:Sessionserver",
        productUri: "urn:kestrel:peer",
        applicationName: { text: "Session server", locale: "en" },
    },
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
const add = (parent, name, dataType, value, rank, arrayDimensions) => own.addVariable({
    componentOf: parent, browseName: name, nodeId: `s=${name}`, dataType, valueRank: rank,
    arrayDimensions, value, accessLevel: "CurrentRead | CurrentWrite", userAccessLevel: "CurrentRead | CurrentWrite",
});
for (const [name, [first, second]] of Object.entries(samples)) {
    const dataType = DataType[name];
    add(types, `Scalar${name}`, name, { dataType, arrayType: VariantArrayType.Scalar, value: first }, -1);
    add(types, `Array${name}`, name,
        { dataType, arrayType: VariantArrayType.Array, value: [first, second, first] }, 1, [0]);
    add(types, `Matrix${name}`, name, { dataType, arrayType: VariantArrayType.Matrix,
        dimensions: [2, 3], value: [first, second, first, second, first, second] }, 2, [2, 3]);
}
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

const machine = own.addObject({ organizedBy: objects, browseName: "Machine", nodeId: "s=Machine", eventNotifier: 1 });
const method = own.addMethod(machine, { browseName: "Add", nodeId: "s=Add",
    inputArguments: [{ name: "a", dataType: DataType.Double }, { name: "b", dataType: DataType.Double }],
    outputArguments: [{ name: "sum", dataType: DataType.Double }] });
method.bindMethod(([a, b], context, callback) => callback(null, { statusCode: StatusCodes.Good,
    outputArguments: [{ dataType: DataType.Double, value: a.value + b.value }] }));
const events = setInterval(() => space.rootFolder.objects.server.raiseEvent("BaseEventType", {
    message: { dataType: DataType.LocalizedText, value: { text: `tick ${tick}` } },
    severity: { dataType: DataType.UInt16, value: 100 } }), 500).unref();

const historic = own.addVariable({ componentOf: machine, browseName: "Historic", nodeId: "s=Historic",
    dataType: "Double", value: { dataType: DataType.Double, value: 0 } });
addAggregateSupport(space);
space.installHistoricalDataNode(historic, { maxOnlineValues: 5000 });
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

// node-opcua, kept on the loopback interface, and what the peers and the plant make of it.
import "./loopback.mjs";

import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import net from "node:net";
import { tmpdir } from "node:os";
import path from "node:path";
import { LocalizedText, QualifiedName } from "node-opcua-data-model";
import { OPCUACertificateManager } from "node-opcua-certificate-manager";
import { coerceNodeId, ExpandedNodeId, NodeIdType } from "node-opcua-nodeid";
import { StatusCodes } from "node-opcua-status-code";
import { DataType, Variant, VariantArrayType } from "node-opcua-variant";

export { addAggregateSupport, installAggregateConfigurationOptions } from "node-opcua-aggregates";
export { AttributeIds, OPCUAClient } from "node-opcua-client";
export { PermissionFlag } from "node-opcua-data-model";
export { makeEUInformation, standardUnits } from "node-opcua-data-access";
export { nodesets } from "node-opcua-nodesets";
export { MessageSecurityMode, SecurityPolicy } from "node-opcua-secure-channel";
export { OPCUAServer, RegisterServerMethod } from "node-opcua-server";
export { OPCUADiscoveryServer } from "node-opcua-server-discovery";
export { constructEventFilter } from "node-opcua-service-filter";
export { UserTokenPolicy, UserTokenType } from "node-opcua-types";
export { coerceNodeId, DataType, LocalizedText, StatusCodes, Variant, VariantArrayType };

/** A folder that goes when the process does. */
export function temporaryFolder() {
    const folder = mkdtempSync(path.join(tmpdir(), "kestrel-peer-"));
    process.on("exit", () => rmSync(folder, { recursive: true, force: true }));
    return folder;
}

/** Accepts every certificate unless told otherwise. */
export async function certificateManager(rootFolder, automaticallyAcceptUnknownCertificate = true) {
    const manager = new OPCUACertificateManager({
        rootFolder,
        automaticallyAcceptUnknownCertificate,
        disableFileWatchers: true,
    });
    await manager.initialize();
    return manager;
}

async function freePort() {
    const probe = net.createServer().listen({ port: 0 });
    await once(probe, "listening");
    const { port } = probe.address();
    await new Promise((done) => probe.close(done));
    return port;
}

/** A server that is not started yet, on a free port unless told otherwise. */
export async function makeServer(Server, name, certificates, options) {
    return new Server({
        hostname: "127.0.0.1",
        serverCertificateManager: certificates,
        userCertificateManager: certificates,
        nodeset_filename: [],
        serverInfo: {
            applicationUri: `urn:localhost:kestrel:${name.replaceAll(" ", "")}`,
            productUri: "urn:kestrel:peer",
            applicationName: { text: name, locale: "en" },
        },
        ...options,
        port: Number(options?.port) || await freePort(),
    });
}

/** Two values of each built-in type but those that hold others, some at their limits. */
export const samples = {
    Boolean: [true, false], SByte: [-128, 127], Byte: [0, 255], Int16: [-32768, 32767],
    UInt16: [0, 65535], Int32: [-2147483648, 5], UInt32: [0, 4294967295],
    Int64: [[0xffffffff, 0xfffffffb], [0, 1]], UInt64: [[0xffffffff, 0xffffffff], [0, 7]],
    Float: [0.1, -1.5], Double: [0.1, Infinity], String: ["Hot\u6c34", ""],
    DateTime: [new Date("2024-02-29T13:14:15.123Z"), new Date("1999-12-31T23:59:59Z")],
    Guid: ["72962B91-FA75-4AE6-8D28-B404DC7DAF63", "00000000-0000-0000-0000-000000000000"],
    ByteString: [Buffer.from([0, 1, 2]), Buffer.alloc(0)], XmlElement: ["<a/>", "<b>1</b>"],
    NodeId: [coerceNodeId("ns=1;s=x"), coerceNodeId("i=85")],
    ExpandedNodeId: [new ExpandedNodeId(NodeIdType.NUMERIC, 85, 0, "urn:x", 0),
        new ExpandedNodeId(NodeIdType.STRING, "y", 1)],
    StatusCode: [StatusCodes.BadNodeIdUnknown, StatusCodes.Good],
    QualifiedName: [new QualifiedName({ namespaceIndex: 1, name: "q" }), new QualifiedName({ name: "r" })],
    LocalizedText: [new LocalizedText({ locale: "de", text: "t" }), new LocalizedText({ text: "u" })],
};

/** Writable variables "ScalarInt16", "ArrayInt16", "MatrixInt16" and so on, of two values each. */
export function addEveryType(namespace, componentOf, values, options) {
    const add = (browseName, dataType, valueRank, value, arrayDimensions) => namespace.addVariable({
        componentOf, browseName, nodeId: `s=${browseName}`, valueRank, arrayDimensions,
        dataType: { Variant: "BaseDataType", ExtensionObject: "Structure" }[dataType] ?? dataType,
        value: { dataType: DataType[dataType], ...value },
        accessLevel: "CurrentRead | CurrentWrite", userAccessLevel: "CurrentRead | CurrentWrite",
        ...options,
    });
    for (const [type, [first, second]] of Object.entries(values)) {
        if (type !== "Variant") add(`Scalar${type}`, type, -1,
            { arrayType: VariantArrayType.Scalar, value: first });
        add(`Array${type}`, type, 1,
            { arrayType: VariantArrayType.Array, value: [first, second, first] }, [0]);
        add(`Matrix${type}`, type, 2, { arrayType: VariantArrayType.Matrix, dimensions: [2, 3],
            value: [first, second, first, second, first, second] }, [2, 3]);
    }
}

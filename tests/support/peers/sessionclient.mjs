// What node-opcua's client makes of a server, as the lines that harrier prints, but without server
// timestamps: sessionclient.mjs URL prints "READY URL" and takes a JSON array a line:
// ["walk" or "read", NODEID...] or ["history", NODEID, FROM, TO]. "walk" browses the nodes and what
// is below them, but for some. "END" stands behind each answer.
import {
    AttributeIds, certificateManager, DataType, OPCUAClient, temporaryFolder, VariantArrayType,
} from "./opcua.mjs";
import { createInterface } from "node:readline";
import { decodeNodeId } from "node-opcua-basic-types";
import { BinaryStream } from "node-opcua-binary-stream";
import { NodeClass } from "node-opcua-data-model";
import { encodeExtensionObject } from "node-opcua-extension-object";
import { NodeIdType } from "node-opcua-nodeid";
import { browseAll } from "node-opcua-pseudo-session";

const url = process.argv[2];

// Null and undefined fields stay away.
const object = (fields) => Object.fromEntries(
    Object.entries(fields).filter(([, value]) => value !== null && value !== undefined));
const nonZero = (number) => number || undefined;

function float(value) {
    for (let digits = 1; digits < 9; ++digits)
        if (Math.fround(Number(value.toPrecision(digits))) === value)
            return Number(value.toPrecision(digits));
    return Number(value.toPrecision(9));
}
const real = (value, text = (x) => x) => Number.isFinite(value) ? text(value) : String(value);
const time = (date, picoseconds = 0) => date && (date.toISOString().slice(0, -1)
    + String(Math.floor(picoseconds / 1e5)).padStart(4, "0")).replace(/\.?0+$/, "") + "Z";
const bytes = (buffer) => buffer ? buffer.toString("base64") : null;
const bits = ([high, low]) => (BigInt(high >>> 0) << 32n) | BigInt(low >>> 0);
const code = (status) => status.value || null;

function nodeId(id, expanded) {
    const types = [NodeIdType.NUMERIC, NodeIdType.STRING, NodeIdType.GUID, NodeIdType.BYTESTRING];
    const type = types.indexOf(id.identifierType);
    const value = [id.value, id.value, String(id.value).toLowerCase(),
        type === 3 && bytes(id.value)][type];
    return object({ IdType: nonZero(type), Id: value,
        Namespace: (expanded && id.namespaceUri) || nonZero(id.namespace),
        ServerUri: expanded ? nonZero(id.serverIndex) : undefined });
}

function extensionObject(value) {
    if (!value) return { TypeId: { Id: 0 } };
    const stream = new BinaryStream(1 << 20);
    encodeExtensionObject(value, stream);
    const end = stream.length;
    stream.rewind();
    const type = decodeNodeId(stream);
    const encoding = stream.readUInt8();
    const body = stream.buffer.subarray(stream.length + 4, end);
    return { TypeId: nodeId(type), Encoding: encoding, Body: bytes(body) };
}

function diagnosticInfo(value) {
    const index = (number) => number >= 0 ? number : undefined;
    return value && object({ SymbolicId: index(value.symbolicId),
        NamespaceUri: index(value.namespaceURI), Locale: index(value.locale),
        LocalizedText: index(value.localizedText), AdditionalInfo: value.additionalInfo,
        InnerStatusCode: code(value.innerStatusCode),
        InnerDiagnosticInfo: diagnosticInfo(value.innerDiagnosticInfo) });
}

const bodies = {
    Int64: (value) => BigInt.asIntN(64, bits(value)).toString(),
    UInt64: (value) => bits(value).toString(),
    Float: (value) => real(value, float),
    Double: (value) => real(value),
    DateTime: (value) => time(value) ?? "1601-01-01T00:00:00Z",
    Guid: (value) => value.toLowerCase(),
    ByteString: bytes,
    NodeId: (value) => nodeId(value),
    ExpandedNodeId: (value) => nodeId(value, true),
    StatusCode: code,
    QualifiedName: (value) => object({ Name: value.name, Uri: nonZero(value.namespaceIndex) }),
    LocalizedText: (value) => object({ Locale: value.locale, Text: value.text }),
    ExtensionObject: extensionObject,
    DataValue: (value) => object({ Value: variant(value.value), Status: code(value.statusCode),
        SourceTimestamp: time(value.sourceTimestamp), ServerTimestamp: time(value.serverTimestamp) }),
    Variant: (value) => variant(value),
    DiagnosticInfo: diagnosticInfo,
};

function variant(value) {
    if (!value || value.dataType === DataType.Null) return null;
    const body = bodies[DataType[value.dataType]] ?? ((same) => same);
    const isScalar = value.arrayType === VariantArrayType.Scalar;
    const result = isScalar ? body(value.value) : Array.from(value.value ?? [], (x) => body(x));
    const isGood = isScalar && value.dataType === DataType.StatusCode && result === null;
    return { Type: value.dataType, ...(!isGood && { Body: result ?? null }),
        ...(value.dimensions?.length > 0 && { Dimensions: value.dimensions }) };
}

const idText = (id) => !id || id.isEmpty() ? null
    : id.toString().replace(/^ns=0;/, "").replace(/(^|;)g=.*/, (text) => text.toLowerCase());
const name = ({ namespaceIndex, name: text }) => namespaceIndex ? `${namespaceIndex}:${text}` : text;
const print = (line) => process.stdout.write(`${JSON.stringify(line)}\n`);
const printValue = (service, id, value) => print({ service, nodeId: id, attribute: "Value",
    status: value.statusCode.name, value: variant(value.value),
    sourceTimestamp: time(value.sourceTimestamp, value.sourcePicoseconds) ?? null });

const client = OPCUAClient.create({ endpointMustExist: false, connectionStrategy: { maxRetry: 0 },
    clientCertificateManager: await certificateManager(temporaryFolder()), keepSessionAlive: true });
await client.connect(url);
const session = await client.createSession();

// The diagnostics of sessions, which come and go with clients, and most of those that are alike.
const isSkipped = (id) => id === "i=3706" || /^ns=1;s=(Tag|Item)\d\d/.test(id);

async function walk(...ids) {
    const seen = new Set(ids);
    for (let level = ids; level.length > 0;) {
        const results = await browseAll(session, level.map((id) => ({ nodeId: id,
            referenceTypeId: "HierarchicalReferences", browseDirection: 0, includeSubtypes: true,
            resultMask: 63 })));
        const next = [];
        results.forEach(({ references }, i) => references?.forEach((reference) => {
            const target = idText(reference.nodeId);
            print({ service: "browse", nodeId: level[i],
                referenceTypeId: idText(reference.referenceTypeId), isForward: reference.isForward,
                target, nodeClass: NodeClass[reference.nodeClass],
                browseName: name(reference.browseName), displayName: reference.displayName.text,
                typeDefinition: idText(reference.typeDefinition) });
            if (!seen.has(target) && !isSkipped(target)) next.push(target);
            seen.add(target);
        }));
        level = next;
    }
}

const commands = {
    walk,
    async read(...ids) {
        for (let i = 0; i < ids.length; i += 500) {
            const slice = ids.slice(i, i + 500);
            const values = await session.read(
                slice.map((id) => ({ nodeId: id, attributeId: AttributeIds.Value })));
            values.forEach((value, k) => printValue("read", slice[k], value));
        }
    },
    async history(id, from, to) {
        const { historyData } =
            await session.readHistoryValue(id, new Date(from), new Date(to));
        for (const value of historyData.dataValues) printValue("history", id, value);
    },
};

process.stdout.write(`READY ${url}\n`);
for await (const line of createInterface({ input: process.stdin })) {
    const [command, ...args] = JSON.parse(line);
    await commands[command](...args);
    process.stdout.write("END\n");
}
await session.close();
await client.disconnect();
process.stdout.write("", () => process.exit(0)); // once a pipe has taken all of it

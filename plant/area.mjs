// An area of the plant: what a server of it is made of, and the values that move in it.
import {
    addAggregateSupport, coerceNodeId, DataType, installAggregateConfigurationOptions,
    makeEUInformation, PermissionFlag, standardUnits, StatusCodes, VariantArrayType,
} from "../tests/support/peers/opcua.mjs";

/** Namespace of the data types, see plant.NodeSet2.xml. */
export const typesUri = "urn:kestrel:plant";

const units = { ...standardUnits, per_hour: makeEUInformation("H10", "1/h", "reciprocal hour") };

/** The users; what an operator may, an engineer may, too. Everybody may look. */
const roleIds = { anonymous: "i=15644", operator: "i=15680", engineer: "i=16036" };
export const users = {
    operator: { password: "kettle", roles: ["operator"] },
    engineer: { password: "wrench", roles: ["operator", "engineer"] },
};
export const userManager = {
    isValidUser: (name, password) =>
        Object.hasOwn(users, name) && users[name].password === password,
    getUserRoles: (name) =>
        (users[name]?.roles ?? ["anonymous"]).map((role) => coerceNodeId(roleIds[role])),
};

const look = PermissionFlag.Browse | PermissionFlag.Read | PermissionFlag.ReadHistory
    | PermissionFlag.ReceiveEvents;
/** Permissions of a node that `role` may write or call. */
export const permissions = (role) => [
    { roleId: coerceNodeId(roleIds.anonymous), permissions: look },
    { roleId: coerceNodeId(roleIds[role]),
        permissions: look | PermissionFlag.Write | PermissionFlag.Call },
];

export const clamp = (value, low, high) => Math.min(Math.max(value, low), high);

// The same in every run.
let seed = 1;
/** From -1 to 1. */
export function noise() {
    seed = Math.imul(seed, 1664525) + 1013904223 | 0;
    return seed / 2 ** 31;
}

/** What a method says instead of its outputs where its argument `index` is not to be had. */
export const refused = (index, statusCode = StatusCodes.BadOutOfRange) => ({ index, statusCode });

/** A variable as its simulation sees it. */
class Tag {
    constructor(area, node, type) {
        Object.assign(this, { area, node, type });
    }
    get value() {
        return this.node.readValue().value.value;
    }
    set value(value) {
        this.put(value);
    }
    put(value, statusCode = StatusCodes.Good) {
        this.node.setValueFromSource({ ...this.type, value }, statusCode, this.area.now);
    }
}

export class Area {
    /** `now` is the time of the simulation. */
    constructor(server, now) {
        this.now = now;
        this.space = server.engine.addressSpace;
        this.own = this.space.getOwnNamespace();
        this.server = this.space.rootFolder.objects.server;
        this.space.installAlarmsAndConditionsService();
        addAggregateSupport(this.space);
    }

    dataType(name) {
        return this.space.getNamespace(typesUri).findDataType(name);
    }

    structure(name, fields) {
        return this.space.constructExtensionObject(this.dataType(name), fields);
    }

    folder(name, description) {
        return this.own.addFolder(this.space.rootFolder.objects,
            { browseName: name, nodeId: `s=${name}`, description });
    }

    /** Things that happen to it are events of its own and of the server. */
    object(parent, name, description) {
        return this.own.addObject({ organizedBy: parent, browseName: name, description,
            nodeId: `s=${name}`, eventNotifier: 1, eventSourceOf: this.server });
    }

    #tag(add, parent, name, type, { value, write, history, ...options }) {
        const accessLevel = write ? "CurrentRead | CurrentWrite" : "CurrentRead";
        const node = this.own[add]({
            componentOf: parent, browseName: name, nodeId: `s=${parent.nodeId.value}.${name}`,
            accessLevel, userAccessLevel: accessLevel, minimumSamplingInterval: 0, ...options,
            value: type.isState ? value : { ...type, value },
        });
        if (write) node.setRolePermissions(permissions(write));
        const { isState, ...variant } = type;
        const tag = new Tag(this, node, variant);
        if (history) {
            tag.value = value; // with which its history begins
            this.space.installHistoricalDataNode(node, { maxOnlineValues: 20000 });
            installAggregateConfigurationOptions(node, { stepped: false });
        }
        return tag;
    }

    /** A measured or set quantity with its unit and range. `write` is the role that may. */
    analog(parent, name, unit, low, high, { dataType = "Double", ...options } = {}) {
        return this.#tag("addAnalogDataItem", parent, name, { dataType: DataType[dataType] }, {
            value: low, dataType, engineeringUnits: units[unit],
            engineeringUnitsRange: { low, high }, instrumentRange: { low, high }, ...options });
    }

    /** A Boolean whose states have names. */
    flag(parent, name, [trueState, falseState], value, options) {
        return this.#tag("addTwoStateDiscrete", parent, name,
            { dataType: DataType.Boolean, isState: true },
            { trueState, falseState, value, ...options });
    }

    /** An index of names. */
    choice(parent, name, enumValues, value, options) {
        return this.#tag("addMultiStateDiscrete", parent, name,
            { dataType: DataType.UInt32, isState: true },
            { enumStrings: enumValues, value, ...options });
    }

    /** Anything else; `type` is the name of a built-in type. */
    variable(parent, name, type, value, { dimensions, dataType = type, ...options } = {}) {
        const isArray = Array.isArray(value) || ArrayBuffer.isView(value);
        const arrayType = dimensions ? VariantArrayType.Matrix
            : isArray ? VariantArrayType.Array : VariantArrayType.Scalar;
        return this.#tag("addVariable", parent, name,
            { dataType: DataType[type], arrayType, dimensions },
            { value, dataType, valueRank: dimensions?.length ?? (isArray ? 1 : -1),
                arrayDimensions: dimensions ?? (isArray ? [0] : undefined), ...options });
    }

    /**
     * A method that `role` may call. Arguments are [name, data type, rank, description]; `call`
     * takes their values and returns those of the outputs, or what refused() says.
     */
    method(parent, name, role, inputs, outputs, call) {
        const declared = ([argument, dataType, valueRank = -1, description = ""]) => ({
            name: argument, valueRank, description,
            dataType: this.dataType(dataType)?.nodeId ?? DataType[dataType] });
        const builtIn = (dataType) => DataType[dataType]
            ?? (this.dataType(dataType).isEnumeration() ? DataType.Int32 : DataType.ExtensionObject);
        this.own.addMethod(parent, {
            browseName: name, nodeId: `s=${parent.nodeId.value}.${name}`,
            rolePermissions: permissions(role),
            inputArguments: inputs.map(declared), outputArguments: outputs.map(declared),
        }).bindMethod(async (args, _context) => {
            const result = call(...args.map(({ value }) => value)) ?? [];
            if (!Array.isArray(result))
                return { statusCode: StatusCodes.BadInvalidArgument, inputArgumentResults:
                    args.map((_, i) => i === result.index ? result.statusCode : StatusCodes.Good) };
            return { statusCode: StatusCodes.Good, outputArguments: result.map((value, i) => ({
                dataType: builtIn(outputs[i][1]), value,
                arrayType: Array.isArray(value) ? VariantArrayType.Array : VariantArrayType.Scalar,
            })) };
        });
    }

    #alarm(instantiate, source, name, tag, options) {
        const alarm = instantiate({ browseName: name, conditionName: name, conditionSource: source,
            inputNode: tag.node, nodeId: `s=${source.nodeId.value}.${name}`,
            optionals: ["ConfirmedState", "Confirm"], ...options });
        alarm.sourceName.setValueFromSource(
            { dataType: DataType.String, value: source.browseName.name });
    }

    /** An alarm of `source`; limits are highLimit, highHighLimit, lowLimit and lowLowLimit. */
    limitAlarm(source, name, tag, limits) {
        this.#alarm((options) => limits.lowLimit === undefined
            ? this.own.instantiateNonExclusiveLimitAlarm("NonExclusiveLimitAlarmType", options)
            : this.own.instantiateExclusiveLimitAlarm("ExclusiveLevelAlarmType", options),
        source, name, tag, limits);
    }

    /** An alarm of `source` that is there while the Boolean `tag` is true. */
    stateAlarm(source, name, tag) {
        const normalState = this.variable(source, `${name}NormalState`, "Boolean", false).node;
        this.#alarm((options) => this.own.instantiateOffNormalAlarm(options), source, name, tag,
            { normalState });
    }

    event(source, text, severity) {
        source.raiseEvent("BaseEventType", {
            message: { dataType: DataType.LocalizedText, value: { text } },
            severity: { dataType: DataType.UInt16, value: severity } });
    }
}

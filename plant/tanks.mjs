// The tank farm: three tanks that run into each other, and a folder of 10,000 tags.
import { clamp, noise, refused } from "./area.mjs";
import { DataType, StatusCodes, Variant } from "../tests/support/peers/opcua.mjs";

const height = 4; // metres
const haste = 30; // the tanks would take hours

function tank(area, parent, name, surface) {
    const it = area.object(parent, name, `A tank of ${surface} square metres`);
    const level = area.analog(it, "Level", "metre", 0, height, { value: 2, history: true });
    area.limitAlarm(it, "LevelLimits", level,
        { lowLowLimit: 0.4, lowLimit: 0.8, highLimit: 3.2, highHighLimit: 3.6 });
    return {
        it, surface, level, metres: 2, drain: 0,
        valve: area.analog(it, "Valve", "percent", 0, 100, { value: 60, write: "operator" }),
        outflow: area.analog(it, "Outflow", "cubic_metre_per_hour", 0, 60, { dataType: "Float" }),
        temperature: area.analog(it, "Temperature", "degree_celsius", 0, 60, { value: 15 }),
        celsius: 15,
    };
}

// Tags that cost nothing while nobody looks at them.
function addTags(area, count) {
    const folder = area.folder("Tags", `${count} tags of a large plant`);
    const kinds = [["Double", (x) => 50 + 50 * x], ["Float", (x) => 20 * x],
        ["Int32", (x) => Math.round(1000 * x)], ["Boolean", (x) => x > 0]];
    for (let i = 0; i < count; ++i) {
        const [dataType, value] = kinds[i % kinds.length];
        const name = `Tag${String(i).padStart(5, "0")}`;
        const wave = () => value(Math.sin(Date.now() / 1000 / (5 + i % 97) + i));
        area.own.addVariable({ componentOf: folder, browseName: name, nodeId: `s=${name}`, dataType,
            minimumSamplingInterval: 100,
            value: { get: () => new Variant({ dataType: DataType[dataType], value: wave() }) } });
    }
}

export function build(area) {
    const folder = area.folder("Tanks", "Raw water is treated and kept");
    const tanks = [["Raw water", 6], ["Treatment", 4], ["Clean water", 8]].map(
        ([name, surface]) => tank(area, folder, name, surface));
    const [raw, treatment, clean] = tanks;
    const pump = area.flag(raw.it, "WellPump", ["On", "Off"], true, { write: "operator" });
    const heater = area.analog(treatment.it, "HeaterSetPoint", "degree_celsius", 10, 45,
        { value: 30, write: "operator" });
    const chlorine = area.analog(treatment.it, "ChlorineSetPoint", "part_per_million", 0, 3,
        { value: 0.8, write: "engineer" });
    const residual = area.analog(clean.it, "Chlorine", "part_per_million", 0, 5, { value: 0.8 });
    const turbidity = area.analog(clean.it, "Turbidity", "percent", 0, 100,
        { description: "Its sensor fails for ten seconds of each minute" });
    area.method(folder, "Drain", "operator",
        [["Tanks", "UInt16", 1, "1 for the first one"], ["Seconds", "Double", -1, "1 to 600"]],
        [["Levels", "Double", 1, "Metres, of these tanks"]],
        (numbers, seconds) => {
            const chosen = Array.from(numbers ?? [], (number) => tanks[number - 1]);
            if (chosen.length === 0 || chosen.includes(undefined)) return refused(0);
            if (!(seconds >= 1 && seconds <= 600)) return refused(1);
            for (const each of chosen) each.drain = seconds;
            return [chosen.map((each) => each.metres)];
        });
    addTags(area, 10000);

    let seconds = 0;
    return (step) => {
        seconds += step;
        if (raw.metres > 3.3) pump.value = false;
        if (raw.metres < 1.2) pump.value = true;
        let inflow = pump.value ? 45 : 0; // cubic metres an hour
        let warmth = 12 + Math.sin(seconds / 300);
        for (const each of tanks) {
            const opening = each.drain > 0 ? 100 : each.valve.value;
            each.drain -= step;
            const outflow = opening / 100 * 25 * Math.sqrt(each.metres);
            const hours = step * haste / 3600;
            const volume = each.surface * Math.max(each.metres, 0.1);
            each.celsius += (warmth - each.celsius) * clamp(inflow * hours / volume, 0, 1);
            if (each === treatment)
                each.celsius += (heater.value - each.celsius) * clamp(0.02 * step, 0, 1);
            each.metres = clamp(each.metres + (inflow - outflow) * hours / each.surface, 0, height);
            each.level.value = each.metres;
            each.outflow.value = outflow;
            each.temperature.value = each.celsius + 0.02 * noise();
            [inflow, warmth] = [outflow, each.celsius];
        }
        residual.value += (chlorine.value - residual.value) * clamp(0.01 * step, 0, 1);
        turbidity.put(clamp(5 + 3 * Math.sin(seconds / 41) + noise(), 0, 100),
            seconds % 60 < 50 ? StatusCodes.Good : StatusCodes.BadSensorFailure);
    };
}

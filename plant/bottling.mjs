// The bottling line: states, recipes, counters, and bottles that jam now and then.
import { clamp, noise, refused } from "./area.mjs";

const states = { Stopped: 0, Starting: 1, Running: 2, Stopping: 3, Jammed: 4 };
const sizes = { Small: 330, Medium: 500, Large: 1000 };
const ingredients = ["Water", "Syrup", "Acid"];

export function build(area) {
    const line = area.object(area.folder("Bottling", "A line that fills and packs bottles"), "Line",
        "From the empty bottle to the pallet");
    const recipe = (Name, Bottle, BottlesPerHour, millilitres) => area.structure("RecipeType",
        { name: Name, bottle: Bottle, bottlesPerHour: BottlesPerHour,
            doses: millilitres.map((amount, i) => area.structure("DoseType",
                { ingredient: ingredients[i] ?? `Ingredient ${i + 1}`, millilitres: amount })) });
    const book = [recipe("Lemonade", sizes.Medium, 12000, [430, 65, 5]),
        recipe("Tonic", sizes.Small, 18000, [300, 26, 4]),
        recipe("Spring water", sizes.Large, 9000, [1000])];

    const stateOf = (name, type, value, options) => area.variable(line, name, "Int32", value,
        { dataType: area.dataType(type), ...options });
    const state = stateOf("State", "LineState", states.Running);
    const current = area.variable(line, "Recipe", "ExtensionObject", book[0],
        { dataType: area.dataType("RecipeType"), write: "engineer" });
    area.variable(line, "RecipeBook", "ExtensionObject", book,
        { dataType: area.dataType("RecipeType") });
    const bottle = stateOf("Bottle", "BottleSize", book[0].bottle, { write: "operator" });
    const setSpeed = area.analog(line, "SpeedSetPoint", "per_hour", 0, 24000,
        { value: 12000, write: "operator", description: "Bottles an hour" });
    const speed = area.analog(line, "Speed", "per_hour", 0, 24000,
        { value: 0, history: true, description: "Bottles an hour" });
    const pressure = area.analog(line, "FillerPressure", "bar", 0, 6, { history: true });
    const produced = area.variable(line, "Produced", "UInt32", 0);
    const rejected = area.variable(line, "Rejected", "UInt32", 0);
    const batch = area.variable(line, "Batch", "String", "B-0001", { write: "operator" });
    const volumes = area.variable(line, "FillVolumes", "Double", new Float64Array(12),
        { description: "Millilitres, of each nozzle" });
    const pallet = area.variable(line, "Pallet", "Byte", new Uint8Array(24),
        { dimensions: [4, 6], write: "operator", description: "Crates on each place" });
    const jammed = area.flag(line, "Jammed", ["Jammed", "Clear"], false);
    const lastJam = area.variable(line, "LastJam", "DateTime", new Date());
    area.stateAlarm(line, "JamAlarm", jammed);
    area.limitAlarm(line, "FillerPressureHigh", pressure, { highLimit: 4.6, highHighLimit: 5.5 });

    const go = (to) => {
        if (state.value === states[to]) return;
        state.value = states[to];
        jammed.value = to === "Jammed";
        area.event(line, `The line is ${to.toLowerCase()}`, to === "Jammed" ? 700 : 200);
    };
    area.method(line, "Start", "operator", [], [], () => go("Starting"));
    area.method(line, "Stop", "operator", [], [], () => go("Stopping"));
    const jam = () => {
        if (perHour === 0) return;
        go("Jammed");
        lastJam.value = area.now;
        [perHour, untilJam, stuck] = [0, 180 + 100 * noise(), 20];
    };
    area.method(line, "Jam", "operator", [], [], jam);
    area.method(line, "ClearJam", "operator", [],
        [["WasJammed", "Boolean"]], () => {
            const was = jammed.value;
            if (was) go("Starting");
            return [was];
        });
    area.method(line, "SetRecipe", "engineer",
        [["Name", "String", -1, "Shown on the label"], ["Bottle", "BottleSize", -1, "That is filled"],
            ["BottlesPerHour", "UInt32", -1, "1 to 24000"],
            ["Millilitres", "Double", 1, "Of water, syrup and acid, and more; the bottle holds them"]],
        [["Recipe", "RecipeType", -1, "As it runs from now on"]],
        (name, size, perHour, millilitres) => {
            if (!name) return refused(0);
            if (!Object.values(sizes).includes(size)) return refused(1);
            if (!(perHour >= 1 && perHour <= 24000)) return refused(2);
            const amounts = Array.from(millilitres ?? []);
            if (!(amounts.length > 0 && amounts.reduce((sum, each) => sum + each) <= size))
                return refused(3);
            current.value = recipe(name, size, perHour, amounts);
            bottle.value = size;
            setSpeed.value = perHour;
            batch.value = `B-${String(Number(/\d+$/.exec(batch.value) ?? 0) + 1).padStart(4, "0")}`;
            return [current.value];
        });

    let [perHour, bottles, bad, crates, untilJam, stuck] = [0, 0, 0, 0, 120, 0];
    return (step) => {
        const wanted = state.value === states.Starting || state.value === states.Running
            ? setSpeed.value : 0;
        perHour += clamp(wanted - perHour, -3000 * step, 1500 * step);
        if (state.value === states.Starting && perHour >= wanted) go("Running");
        if (state.value === states.Stopping && perHour === 0) go("Stopped");
        if (state.value === states.Jammed && (stuck -= step) < 0) go("Starting"); // somebody came
        if (state.value === states.Running && (untilJam -= step) < 0) jam();
        bottles += perHour / 3600 * step;
        bad += perHour / 3600 * step * 0.004 * (1 + noise());
        speed.value = perHour;
        pressure.value = 3 + perHour / 12000 + 0.1 * noise();
        produced.value = Math.floor(bottles);
        rejected.value = Math.floor(bad);
        volumes.value = Float64Array.from({ length: 12 },
            () => perHour > 0 ? bottle.value + 1.5 * noise() : 0);
        const full = Math.floor(bottles / 20);
        if (full !== crates) {
            crates = full;
            const places = Uint8Array.from(pallet.value);
            if (places.every((height) => height >= 5)) places.fill(0);
            ++places[places.indexOf(Math.min(...places))];
            pallet.value = places;
        }
    };
}

// The boiler house: two steam boilers under control, and a folder with a variable of every type.
import { clamp, noise, permissions, refused } from "./area.mjs";
import { addEveryType, DataType, LocalizedText, samples } from
    "../tests/support/peers/opcua.mjs";

const outside = 20; // degrees Celsius

// Of saturated steam, in bar, by Antoine's equation for 99 to 374 degrees Celsius.
const steamPressure = (celsius) => 10 ** (8.14019 - 1810.94 / (244.485 + celsius)) / 750.06;

function boiler(area, parent, number) {
    const it = area.object(parent, `Boiler ${number}`, "A steam boiler with an oil burner");
    const running = area.flag(it, "Running", ["Running", "Stopped"], true);
    const mode = area.choice(it, "Mode", ["Automatic", "Manual"], 0, { write: "operator" });
    const setPoint = area.analog(it, "TemperatureSetPoint", "degree_celsius", 60, 180,
        { value: 130 + 10 * number, write: "operator" });
    const manualOutput = area.analog(it, "ManualOutput", "percent", 0, 100,
        { value: 50, write: "operator", description: "Of the burner while the mode is Manual" });
    const maximum = area.analog(it, "MaximumPressure", "bar", 1, 16,
        { value: 10, write: "engineer", description: "Above it the burner goes out" });
    const temperature = area.analog(it, "Temperature", "degree_celsius", 0, 200,
        { value: 120, history: true });
    const pressure = area.analog(it, "Pressure", "bar", 0, 16, { history: true });
    const burner = area.analog(it, "BurnerOutput", "percent", 0, 100, { dataType: "Float" });
    const fuel = area.analog(it, "FuelFlow", "kilogram_per_second", 0, 0.1);
    const level = area.analog(it, "WaterLevel", "percent", 0, 100, { value: 70 });
    const pump = area.flag(it, "FeedPump", ["On", "Off"], false);
    const started = area.variable(it, "LastStart", "DateTime", new Date());
    const hours = area.variable(it, "OperatingHours", "UInt32", 1200 * number);
    area.limitAlarm(it, "PressureHigh", pressure, { highLimit: 5.5, highHighLimit: 8 });
    area.limitAlarm(it, "TemperatureLimits", temperature,
        { lowLowLimit: 60, lowLimit: 100, highLimit: 160, highHighLimit: 175 });

    let ramp = null;
    area.method(it, "Start", "operator", [], [], () => {
        if (!running.value) started.value = area.now;
        running.value = true;
    });
    area.method(it, "Stop", "operator", [["Reason", "LocalizedText", -1, "Stands in the event"]],
        [], (reason) => {
            running.value = false;
            area.event(it, `Boiler ${number} was stopped: ${reason.text ?? ""}`, 300);
        });
    area.method(it, "Ramp", "operator",
        [["Target", "Double", -1, "Degrees Celsius, 60 to 180"],
            ["Seconds", "Double", -1, "That the set point takes to get there"]],
        [["Rate", "Double", -1, "Degrees Celsius a second"]],
        (target, seconds) => {
            if (!(target >= 60 && target <= 180)) return refused(0);
            if (!(seconds >= 1 && seconds <= 86400)) return refused(1);
            ramp = { target, rate: (target - setPoint.value) / seconds };
            return [ramp.rate];
        });

    let [celsius, integral, seconds, water] = [120, 50, 0, 70];
    return (step) => {
        seconds += step;
        if (ramp) {
            const next = setPoint.value + ramp.rate * step;
            const isThere = (ramp.target - next) * ramp.rate <= 0;
            setPoint.value = isThere ? ramp.target : next;
            if (isThere) ramp = null;
        }
        const error = setPoint.value - celsius;
        let output = clamp(4 * error + integral, 0, 100);
        if (output > 0 && output < 100) integral = clamp(integral + 0.05 * error * step, 0, 100);
        if (mode.value === 1) output = manualOutput.value;
        if (!running.value || steamPressure(celsius) > maximum.value) output = 0;
        const demand = 0.3 + 0.15 * Math.sin(seconds / 97 + number) + 0.02 * noise();
        celsius += (output / 100 * 1.6 - (celsius - outside) * 0.004
            - (celsius > 100 ? demand : 0)) * step;
        if (water < 60) pump.value = true;
        if (water > 75) pump.value = false;
        water = clamp(water + ((pump.value ? 0.5 : 0) - (celsius > 100 ? demand / 2 : 0)) * step,
            0, 100);
        temperature.value = celsius + 0.05 * noise();
        pressure.value = steamPressure(celsius);
        burner.value = output;
        fuel.value = output / 100 * 0.08;
        level.value = water + 0.1 * noise();
        if (running.value) hours.value = 1200 * number + Math.floor(seconds / 3600);
    };
}

export function build(area) {
    const folder = area.folder("Boilers", "Two steam boilers");
    const steps = [1, 2].map((number) => boiler(area, folder, number));
    const structure = (high) => area.space.constructExtensionObject(
        area.space.findDataType("Range"), { low: 0, high });
    const variants = [{ dataType: DataType.Double, value: 1.5 },
        { dataType: DataType.LocalizedText, value: new LocalizedText({ text: "any" }) }];
    addEveryType(area.own, area.folder("Every type", "A scalar, an array and a matrix of each"),
        { ...samples, ExtensionObject: [structure(1), structure(2)], Variant: variants },
        { rolePermissions: permissions("operator") });
    return (step) => steps.forEach((each) => each(step));
}

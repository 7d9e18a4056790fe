// Installs the peers' packages into node_modules, unless those of package-lock.json are there.
import { spawnSync } from "node:child_process";
import { existsSync, readFileSync, writeFileSync } from "node:fs";
import path from "node:path";
import { fileURLToPath } from "node:url";

const oldestNode = 20;
const folder = path.dirname(fileURLToPath(import.meta.url));
const lock = readFileSync(path.join(folder, "package-lock.json"));
const stamp = path.join(folder, "node_modules", ".kestrel-installed");

function fail(message) {
    process.stderr.write(`the peers cannot be installed: ${message}\n`);
    process.exit(1);
}

if (Number.parseInt(process.versions.node) < oldestNode)
    fail(`node-opcua needs Node.js ${oldestNode} or later, this is ${process.versions.node}`);
if (existsSync(stamp) && readFileSync(stamp).equals(lock)) process.exit(0);

const options = ["--ignore-scripts", "--no-audit", "--no-fund", "--loglevel=error"];
const npm = spawnSync("npm", ["ci", ...options],
                      { cwd: folder, stdio: ["ignore", "inherit", "inherit"] });
if (npm.error) fail(`npm does not start (${npm.error.message})`);
if (npm.status !== 0)
    fail(`"npm ci" in ${folder} failed with exit code ${npm.status}; ` +
         "it needs the npm registry or a filled cache");
writeFileSync(stamp, lock);

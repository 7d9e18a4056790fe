// What the peers have in common.
import "./loopback.mjs";

import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import net from "node:net";
import { tmpdir } from "node:os";
import path from "node:path";
import { parseArgs } from "node:util";
import { OPCUACertificateManager } from "node-opcua-certificate-manager";

/** Ends the process with a message when the options or the number of arguments are wrong. */
export function commandLine(usage, options, least = 0, most = least) {
    try {
        const parsed = parseArgs({ options, allowPositionals: true });
        const count = parsed.positionals.length;
        if (count < least || count > most) throw new Error("wrong number of arguments");
        return parsed;
    } catch (error) {
        process.stderr.write(`${error.message}\nusage: node ${usage}\n`);
        process.exit(2);
    }
}

/** The options of a server: --port, by default a free one; --pki, by default a temporary folder. */
export const serverOptions = { port: { type: "string" }, pki: { type: "string" } };

export async function freePort() {
    const probe = net.createServer().listen({ port: 0 });
    await once(probe, "listening");
    const { port } = probe.address();
    probe.close();
    await once(probe, "close");
    return port;
}

/** `folder`, or a folder that lives as long as the process. */
export function pkiFolder(folder) {
    if (folder) return folder;
    const temporary = mkdtempSync(path.join(tmpdir(), "kestrel-peer-"));
    process.on("exit", () => rmSync(temporary, { recursive: true, force: true }));
    return temporary;
}

export async function certificateManager(rootFolder) {
    const manager = new OPCUACertificateManager({
        rootFolder,
        automaticallyAcceptUnknownCertificate: true,
        disableFileWatchers: true,
    });
    await manager.initialize();
    return manager;
}

/** Says READY and serves until standard input ends or SIGTERM or SIGINT comes. */
export function serve(url, shutdown) {
    let ending = false;
    const end = async () => {
        if (ending) return;
        ending = true;
        setTimeout(() => process.exit(1), 10000).unref();
        await shutdown();
        process.exit(0);
    };
    process.on("SIGTERM", end);
    process.on("SIGINT", end);
    process.stdin.on("end", end);
    process.stdin.resume();
    process.stdout.write(`READY ${url}\n`);
}

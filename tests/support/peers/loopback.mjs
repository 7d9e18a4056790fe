// Keeps a peer on the loopback interface. Import it before anything of node-opcua, which looks up
// the host's name while it is being imported; its discovery server listens on all interfaces and
// announces by multicast everything that registers, and has no option against either.
import dgram from "node:dgram";
import { EventEmitter } from "node:events";
import net from "node:net";
import os from "node:os";

os.hostname = () => "localhost";

const listen = net.Server.prototype.listen;
net.Server.prototype.listen = function (options, ...rest) {
    return listen.call(this, { ...options, host: "127.0.0.1" }, ...rest);
};

// A datagram socket that is deaf and mute.
dgram.createSocket = () => {
    const nothing = () => {};
    const later = (...args) => setImmediate(args.at(-1) ?? nothing);
    const socket = { send: later, close: later, address: () => ({ port: 0 }) };
    for (const name of ["addMembership", "dropMembership", "setMulticastInterface",
                        "setMulticastLoopback", "setMulticastTTL"])
        socket[name] = nothing;
    socket.bind = function (...args) {
        setImmediate(() => this.emit("listening"));
        later(...args);
    };
    return Object.assign(new EventEmitter(), socket);
};

console.log = console.error; // standard output carries results only

// Keeps a peer on the loopback interface. Import it before anything of node-opcua.
//
// node-opcua looks up the host's name while it is being imported; its discovery server listens on
// all interfaces and announces by multicast everything that registers, and has no option against
// either.
import dgram from "node:dgram";
import { EventEmitter } from "node:events";
import net from "node:net";
import os from "node:os";

os.hostname = () => "localhost";

const listen = net.Server.prototype.listen;
net.Server.prototype.listen = function (options, ...rest) {
    return listen.call(this, { ...options, host: "127.0.0.1" }, ...rest);
};

/** A datagram socket that is deaf and mute. */
class SilentSocket extends EventEmitter {
    bind(...args) {
        setImmediate(() => {
            this.emit("listening");
            args.at(-1)?.();
        });
    }
    send(...args) {
        setImmediate(args.at(-1), null);
    }
    close(callback) {
        setImmediate(() => callback?.());
    }
    address() {
        return { address: "127.0.0.1", family: "IPv4", port: 0 };
    }
    addMembership() {}
    dropMembership() {}
    setMulticastInterface() {}
    setMulticastLoopback() {}
    setMulticastTTL() {}
}
dgram.createSocket = () => new SilentSocket();

// Standard output carries results only.
console.log = console.error;

import { OPCUAServer } from "node-opcua-server";

/** A server, not yet started, that is to listen on 127.0.0.1:`port`. */
export async function plantServer({ name, port, certificates, ...rest }) {
    const server = new OPCUAServer({
        port,
        hostname: "127.0.0.1",
        serverCertificateManager: certificates,
        userCertificateManager: certificates,
        nodeset_filename: [],
        serverInfo: {
            applicationUri: `urn:localhost:kestrel:${name.replaceAll(" ", "")}`,
            productUri: "urn:kestrel:peer",
            applicationName: { text: name, locale: "en" },
        },
        ...rest,
    });
    await server.initialize();
    return server;
}

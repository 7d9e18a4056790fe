// Prints what node-opcua's client gets from GetEndpoints, or from FindServers: a line of JSON for
// each URL.
import { certificateManager, commandLine, pkiFolder } from "./peer.mjs";
import { OPCUAClient } from "node-opcua-client";

const { values, positionals: urls } = commandLine(
    "client.mjs [--find-servers] URL...", { "find-servers": { type: "boolean" } }, 1, Infinity);

function application(description) {
    return {
        applicationUri: description.applicationUri,
        productUri: description.productUri,
        applicationName: {
            locale: description.applicationName.locale,
            text: description.applicationName.text,
        },
        applicationType: description.applicationType,
        gatewayServerUri: description.gatewayServerUri,
        discoveryProfileUri: description.discoveryProfileUri,
        discoveryUrls: description.discoveryUrls ?? [],
    };
}

function endpoint(description) {
    return {
        endpointUrl: description.endpointUrl,
        server: application(description.server),
        serverCertificate: description.serverCertificate?.toString("hex") ?? null,
        securityMode: description.securityMode,
        securityPolicyUri: description.securityPolicyUri,
        userIdentityTokens: (description.userIdentityTokens ?? []).map((token) => ({
            policyId: token.policyId,
            tokenType: token.tokenType,
            issuedTokenType: token.issuedTokenType,
            issuerEndpointUrl: token.issuerEndpointUrl,
            securityPolicyUri: token.securityPolicyUri,
        })),
        transportProfileUri: description.transportProfileUri,
        securityLevel: description.securityLevel,
    };
}

const clientCertificateManager = await certificateManager(pkiFolder());
for (const url of urls) {
    const client = OPCUAClient.create({
        endpointMustExist: false,
        connectionStrategy: { maxRetry: 0 },
        clientCertificateManager,
    });
    await client.connect(url);
    const result = values["find-servers"]
        ? (await client.findServers({ endpointUrl: url })).map(application)
        : (await client.getEndpoints({ endpointUrl: url })).map(endpoint);
    await client.disconnect();
    process.stdout.write(`${JSON.stringify(result)}\n`);
}
process.exit(0);

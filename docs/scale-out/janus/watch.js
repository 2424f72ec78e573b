// Watches a mountpoint of Janus: const connection = await watch("http://HOST:8088/janus", 1); its tracks come with
// connection.ontrack, or are in connection.getReceivers() at once.

async function post(url, body) {
    const answer = await fetch(url, {method: "POST", body: JSON.stringify({transaction: crypto.getRandomValues(new Uint32Array(1)).join(), ...body})});
    return answer.json();
}

export async function watch(server, mountpoint, ontrack = () => {}) {
    const session = `${server}/${(await post(server, {janus: "create"})).data.id}`;
    const plugin = `${session}/${(await post(session, {janus: "attach", plugin: "janus.plugin.streaming"})).data.id}`;
    const connection = new RTCPeerConnection();
    connection.ontrack = ontrack;
    const closed = () => ["closed", "failed"].includes(connection.connectionState);
    await post(plugin, {janus: "message", body: {request: "watch", id: mountpoint}});
    // Answers and events come through a question that Janus holds back until there is something, and which keeps the session.
    (async () => {
        while (!closed()) {
            const event = await (await fetch(`${session}?rid=${Date.now()}`)).json();
            if (event.jsep?.type !== "offer")
                continue;
            await connection.setRemoteDescription(event.jsep);
            await connection.setLocalDescription(await connection.createAnswer());
            await new Promise(done => {
                const look = () => connection.iceGatheringState === "complete" && done();
                connection.onicegatheringstatechange = look;
                look();
            });
            await post(plugin, {janus: "message", body: {request: "start"}, jsep: connection.localDescription});
        }
    })();
    return connection;
}

// The one connection to the publisher: status, sound levels and the talk about live pictures. Comes back by itself.

const first_wait_ms = 500;
const longest_wait_ms = 4000;

export class Socket {
  constructor(on) {
    this.on = on; // open(), closed(), status(json), levels(json), and message(json) for all others
    this.wait_ms = first_wait_ms;
    this.connect();
  }

  connect() {
    const scheme = location.protocol === 'https:' ? 'wss:' : 'ws:';
    this.socket = new WebSocket(`${scheme}//${location.host}/talk`);
    this.socket.onopen = () => {
      this.wait_ms = first_wait_ms;
      this.on.open();
    };
    this.socket.onmessage = (event) => this.take(JSON.parse(event.data));
    this.socket.onclose = () => {
      this.on.closed();
      setTimeout(() => this.connect(), this.wait_ms);
      this.wait_ms = Math.min(this.wait_ms * 1.6, longest_wait_ms);
    };
  }

  take(message) {
    // What is counted is sent on only when what came before has been seen.
    if (message.count !== undefined) this.send({ seen: message.count });
    if (message.status) this.on.status(message.status);
    else if (message.levels) this.on.levels(message.levels);
    else this.on.message(message);
  }

  get open() {
    return this.socket.readyState === WebSocket.OPEN;
  }

  send(message) {
    if (this.open) this.socket.send(JSON.stringify(message));
  }
}

// A launcher that speaks to the helper with nothing of ours: Node's own pipes, frames written by hand.
//     node client.js EXPECTED-ANSWER-TO-ID-7 GAME DIRECTORY REPORT
// Exit status 0 if all went well; else 1, with what went wrong in the file REPORT.
'use strict';

const fs = require('fs');
const net = require('net');

// Closing a socket looks at this stream, which can't be opened under Wine if it is no file.
Object.defineProperty(process, 'stderr', { value: null });

const [expected, game, directory, report] = process.argv.slice(2);
const REQUESTS = 1000;
const LIMIT = 10000;

function fail(why) {
  fs.writeFileSync(report, String(why && why.stack || why));
  process.exit(1);
}

class Launcher {
  constructor(socket) {
    this.socket = socket;
    this.bytes = Buffer.alloc(0);
    this.waiting = [];
    this.leaving = false;
    socket.on('data', (data) => this.feed(data));
    socket.on('error', fail);
    socket.on('close', () => this.leaving || fail('the connection is lost'));
  }

  static open(end = Date.now() + LIMIT) {
    return new Promise((resolve) => {
      const socket = net.connect('\\\\.\\pipe\\TollmereSteamHelper');
      const again = (error) => (Date.now() > end ? fail(error) : resolve(Launcher.open(end)));
      socket.once('error', again);
      socket.once('connect', () => resolve(new Launcher(socket.off('error', again))));
    });
  }

  feed(data) {
    this.bytes = Buffer.concat([this.bytes, data]);
    while (this.bytes.length >= 4 && this.bytes.length >= 4 + this.bytes.readUInt32LE(0)) {
      const end = 4 + this.bytes.readUInt32LE(0);
      this.waiting.shift()(this.bytes.subarray(4, end).toString());
      this.bytes = this.bytes.subarray(end);
    }
  }

  ask(body) {
    const frame = Buffer.from('\0\0\0\0STEA:' + body);
    frame.writeUInt32LE(frame.length - 4);
    this.socket.write(frame);
    return new Promise((resolve) => this.waiting.push(resolve));
  }

  async identify(id) {
    const answer = await this.ask(`info_request:${id}`);
    const wanted = 'STEA:' + expected.replace(':7:', `:${id}:`);
    if (answer !== wanted) throw new Error(`answered: ${answer}\nexpected: ${wanted}`);
  }

  leave() {
    this.leaving = true;
    return new Promise((resolve) => this.socket.once('close', resolve).destroy());
  }
}

const quote = (text) => '"' + text.replace(/["\\]/g, '\\$&') + '"';

async function main() {
  let launcher = await Launcher.open();
  for (let id = 1; id <= REQUESTS; ++id) await launcher.identify(id);
  const answer = await launcher.ask(`launch_request:5:${quote(game)}:${quote(directory)}:""`);
  if (!/^STEA:launch_response:5:[1-9][0-9]*$/.test(answer)) throw new Error(`answered: ${answer}`);

  await launcher.leave();
  launcher = await Launcher.open();
  // Many at once: they may arrive in one read, and are answered in order.
  await Promise.all([1, 2, 3, 4, 5, 6, 7, 8].map((id) => launcher.identify(id)));
  await launcher.leave();
}

// Should nothing be left to wait for before the end.
process.exitCode = 1;
main().then(() => process.exit(0), fail);

// A launcher that speaks to the helper with nothing of ours: Node's own pipes, frames written by hand.
//     node client.js EXPECTED-ANSWER-TO-ID-7 GAME DIRECTORY REPORT
// Exit status 0 if all went well; else 1, with what went wrong in the file REPORT.
'use strict';

const fs = require('fs');
const net = require('net');

// Closing a socket looks at this stream, which can't be opened under Wine if it is no file.
Object.defineProperty(process, 'stderr', { value: null });

const [expected, game, directory, report] = process.argv.slice(2);
const PIPE = '\\\\.\\pipe\\TollmereSteamHelper';
const REQUESTS = 1000;
const PAUSE = 50;
const TRIES = 200;

function fail(why) {
  fs.writeFileSync(report, String(why && why.stack || why));
  process.exit(1);
}

function frame(body) {
  const text = Buffer.from('STEA:' + body);
  const length = Buffer.alloc(4);
  length.writeUInt32LE(text.length);
  return Buffer.concat([length, text]);
}

class Launcher {
  constructor(socket) {
    this.socket = socket;
    this.bytes = Buffer.alloc(0);
    this.waiting = [];
    socket.on('data', (data) => this.feed(data));
    this.leaving = false;
    socket.on('error', fail);
    socket.on('close', () => this.leaving || fail('the connection is lost'));
  }

  static tryOpen() {
    return new Promise((resolve, reject) => {
      const socket = net.connect(PIPE);
      socket.once('error', reject);
      socket.once('connect', () => {
        socket.removeAllListeners('error');
        resolve(new Launcher(socket));
      });
    });
  }

  static async open() {
    for (let tries = 1; ; ++tries) {
      try {
        return await Launcher.tryOpen();
      } catch (error) {
        if (tries === TRIES) throw error;
        await new Promise((resolve) => setTimeout(resolve, PAUSE));
      }
    }
  }

  feed(data) {
    this.bytes = Buffer.concat([this.bytes, data]);
    while (this.bytes.length >= 4 && this.bytes.length >= 4 + this.bytes.readUInt32LE(0)) {
      const length = this.bytes.readUInt32LE(0);
      const text = this.bytes.subarray(4, 4 + length).toString();
      this.bytes = this.bytes.subarray(4 + length);
      this.waiting.shift()(text);
    }
  }

  ask(body) {
    return new Promise((resolve) => {
      this.waiting.push(resolve);
      this.socket.write(frame(body));
    });
  }

  leave() {
    this.leaving = true;
    return new Promise((resolve) => {
      this.socket.once('close', () => setTimeout(resolve, PAUSE));
      this.socket.destroy();
    });
  }
}

function same(answer, wanted) {
  if (answer !== wanted) throw new Error(`answered: ${answer}\nexpected: ${wanted}`);
}

const answerTo = (id) => 'STEA:' + expected.replace(':7:', `:${id}:`);
const quote = (text) => '"' + text.replace(/["\\]/g, '\\$&') + '"';

async function main() {
  let launcher = await Launcher.open();
  for (let id = 1; id <= REQUESTS; ++id) same(await launcher.ask(`info_request:${id}`), answerTo(id));

  const launch = `launch_request:5:${quote(game)}:${quote(directory)}:""`;
  const answer = await launcher.ask(launch);
  if (!/^STEA:launch_response:5:[1-9][0-9]*$/.test(answer)) throw new Error(`answered: ${answer}`);

  await launcher.leave();
  launcher = await Launcher.open();
  same(await launcher.ask('info_request:7'), answerTo(7));
  // Many at once: they may arrive in one read, and are answered in order.
  const answers = await Promise.all([1, 2, 3, 4, 5, 6, 7, 8].map((id) => launcher.ask(`info_request:${id}`)));
  answers.forEach((text, index) => same(text, answerTo(index + 1)));
  await launcher.leave();
}

// Should nothing be left to wait for before the end.
process.exitCode = 1;
main().then(() => process.exit(0), fail);

// A client of Tollmere Steam Helper for launchers in Node.js and Electron's main process: starts the helper, keeps up
// the connection to it, and says in words what went wrong. index.d.ts has the calls, README.md their use.
'use strict';

const { spawn } = require('child_process');
const fs = require('fs');
const net = require('net');
const os = require('os');
const path = require('path');
const { performance } = require('perf_hooks');

const isWindows = process.platform === 'win32';
const PIPE_NAME = 'TollmereSteamHelper';
const PAUSE = 50; // milliseconds between two tries
const END_LIMIT = 5000; // milliseconds that a process gets to end
const MOST_RESTARTS = 2; // over one call
const MOST_WRITTEN = 65536; // bytes that the helper takes in one read

// Code, phase, texts of the helper's log that tell it, text, advice: clients/failures.json has them too, and explains.
const FAILURES = [
  ['no-app-id', 'start', ['Invalid steam app id'], 'The helper got no app id.', 'Start the helper with the number of the app, from 1 to 2147483647, in SteamAppId or in -steamAppID.'],
  ['no-steam-library', 'start', ["Steam DLL could not be loaded from '*'"], "The helper can't load steam_api64.dll.", "Put steam_api64.dll for 64 bits into the helper's folder. The path of the helper must be shorter than 260 characters."],
  ['wrong-steam-library', 'start', ['Could not map function: *'], 'steam_api64.dll lacks a function that the helper needs.', "Replace steam_api64.dll by the one of a newer version of Steam's tools."],
  ['steam-without-interface', 'start', ['SteamAPI_Init completed, requesting Steam interfaces.', 'Error initializing Steam.'], "Steam is up, but doesn't give an interface that the helper needs.", "Update Steam. If that doesn't help, steam_api64.dll and Steam don't fit each other."],
  ['steam-refuses', 'start', ['Attempting initialization of Steam API from game directory: *', 'Error initializing Steam.'], 'Steam refuses the app.', 'Start Steam, log on, and check that the user owns the app. Steam must run as the same user and with the same rights as the launcher.'],
  ['steam-refuses-no-directory', 'start', ['Attempting initialization of Steam API in current directory', 'Error initializing Steam.'], 'Steam refuses the app, and the helper knows no game directory for a second attempt.', 'Give the directory of the game. Start Steam, log on, and check that the user owns the app. Steam must run as the same user and with the same rights as the launcher.'],
  ['pipe-taken', 'start', ['Unable to create pipe.', 'Last error: 231 *'], 'Another helper runs on this machine.', 'Wait until it has ended, 20 seconds after its launcher has left. It may belong to another user who is logged on.'],
  ['pipe-not-created', 'start', ['Unable to create pipe.'], 'Windows refuses the helper its pipe.', 'Look up the number behind "Last error:" in the helper\'s log. If it is 5, another program holds a pipe of this name.'],
  ['pipe-not-listening', 'start', ['Unable to connect pipe.', 'Failed to create pipe.'], "The helper's pipe can't listen.", 'Start again. If it stays, look up the number behind "Last error:" in the helper\'s log.'],
  ['no-window', 'start', ['Failed to initialize message window. Aborting process with code 1.'], 'Windows gives the helper no window.', "Start it on a user's desktop, not in a service. Close programs if the desktop is out of resources."],
  ['no-worker', 'start', ['Failed to start worker thread (*). Aborting process with code 1.'], 'Windows gives the helper no thread.', 'The machine is out of memory or threads. Close programs and start again.'],
  ['out-of-memory', 'run', ['Unhandled exception (*). Aborting process with code 3.'], 'The helper ran out of memory and ended.', 'The machine is out of memory. Close programs and start again.'],
  ['nobody-came', 'run', ['Connection timed out, terminating.'], 'The helper ended because no launcher was connected for 20 seconds.', 'Connect within 20 seconds after the start, and stay connected for as long as the helper is needed.'],
  ['closed-from-outside', 'run', ['SteamService :: Shutdown'], 'Somebody closed the helper.', 'Start again. The user was logged off, or another program ended the helper.'],
  ['ended-without-reason', 'run', [], "The helper's process ended, and its log doesn't tell why.", "It was killed, or it can't write its log: check the log's folder. The exit code tells more."],
  ['helper-missing', 'start', [], "The helper's program isn't there.", 'Check the path, and whether another program, such as a virus scanner, has removed the file.'],
  ['helper-not-started', 'start', [], "The system doesn't start the helper's program.", "Look up the system's number. 740: the file is set to run as administrator; 193: it is no program for this machine; 5: the user may not run it."],
  ['other-helper', 'start', [], 'A helper that somebody else started is running.', 'Wait until its launcher has left it for 20 seconds, or leave that launcher.'],
  ['pipe-denied', 'start', [], "The user may not open the helper's pipe.", 'Run the launcher as a user who is logged on, not as a guest or in a sandbox.'],
  ['not-connected', 'start', [], "The helper runs, but its pipe can't be opened in time.", 'Start again. If it stays, another program may hold the pipe, or Steam takes very long to start.'],
  ['no-answer', 'run', [], "The helper doesn't answer, not even after it was started again.", "Close the launcher and all helpers, and start again. Keep the helper's log for those who support it."],
  ['connection-lost', 'run', [], 'The connection to the helper was lost.', 'Call again: the client reconnects, and starts the helper if need be.'],
  ['bad-answer', 'run', [], "The other end of the pipe doesn't speak the helper's protocol.", "Another program holds a pipe of this name, or helper and client don't fit each other."],
  ['game-missing', 'launch', [], "The game's program isn't there.", "Check the path of the game's program."],
  ['game-directory-missing', 'launch', [], "The game's directory isn't there.", 'Check the directory. It must be a folder that exists.'],
  ['game-not-a-program', 'launch', [], "The game's file isn't a program that this machine can start.", 'Give the path of the program itself, not of a folder, a shortcut or a script.'],
  ['game-refused', 'launch', [], 'Windows refuses to start the game.', "The game may need an administrator's rights (Windows' number 740), which the helper can't give, or a virus scanner holds it."],
  ['bad-argument', 'call', [], 'The call has an argument that makes no sense.', 'Read the detail: it names the argument. Nothing was sent.'],
  ['timed-out', 'call', [], 'The call took longer than its caller allows.', 'Call again, or allow more time.'],
  ['canceled', 'call', [], 'The caller canceled the call.', 'None is needed.'],
  ['stopped', 'call', [], 'This client was stopped before the call.', 'Start a new one.'],
].map(([code, phase, log, text, advice]) => ({ code, phase, log, text, advice }));

class SteamHelperError extends Error {
  constructor(code, detail = '') {
    const { phase, text, advice } = FAILURES.find((failure) => failure.code === code);
    super(detail ? `${text} (${detail})` : text);
    Object.assign(this, { name: 'SteamHelperError', code, phase, text, advice, detail });
  }
}

function check(isRight, detail) {
  if (!isRight) throw new SteamHelperError('bad-argument', detail);
}
const isText = (value) => typeof value === 'string' && !value.includes('\0');
const isTime = (value) => typeof value === 'number' && value >= 0;
const isObject = (value) => typeof value === 'object' && value !== null;

// ---- The protocol: text and bytes, nothing else.

const quoteField = (text) => '"' + text.replace(/["\\]/g, '\\$&') + '"';
const infoRequest = (id) => `info_request:${id}`;
const launchRequest = (id, exe, directory, commandLine) =>
  `launch_request:${id}:${[exe, directory, commandLine].map(quoteField).join(':')}`;

// Backslashes count only before a quote, also before the one that closes.
function quoteArgument(text) {
  if (text !== '' && !/[\s"]/.test(text)) return text;
  return '"' + text.replace(/(\\*)"/g, '$1$1\\"').replace(/\\+$/, '$&$&') + '"';
}
const commandLineOf = (args) => args.map(quoteArgument).join(' ');

function frameOf(body) {
  const frame = Buffer.from('\0\0\0\0STEA:' + body);
  frame.writeUInt32LE(frame.length - 4);
  return frame;
}

// The body of the first frame and the bytes behind it; nothing while the frame isn't whole.
function takeFrame(bytes) {
  const length = bytes.length < 4 ? 0 : bytes.readUInt32LE(0);
  if (length > 1 << 20) throw new SteamHelperError('bad-answer', 'a length that no answer has');
  if (bytes.length < 4 + length) return null;
  const [, body] = /^STEA:(.+)$/s.exec(bytes.toString('utf8', 4, 4 + length)) || [];
  if (!body) throw new SteamHelperError('bad-answer', 'no frame of the helper');
  return { body, rest: bytes.subarray(4 + length) };
}

// Ids and Steam ids are BigInts. Nothing of the answer gets into an error: it may be the ticket.
function readAnswer(body) {
  const wrong = (why) => { throw new SteamHelperError('bad-answer', why); };
  const number = (text, bits) => (BigInt(text) >> BigInt(bits) ? wrong('too large') : BigInt(text));
  let parts = /^failure:(\d{1,20})$/.exec(body);
  if (parts) return { kind: 'failure', id: number(parts[1], 64) };
  parts = /^launch_response:(\d{1,20}):(\d{1,10})$/.exec(body);
  if (parts) return { kind: 'launch', id: number(parts[1], 64), processId: Number(number(parts[2], 32)) };
  parts = /^info_response:(\d{1,20}):(\d{1,20}):(.*):(\d{1,10}):((?:[\dA-F]{2})*)$/s.exec(body);
  if (!parts) wrong('none of the three answers');
  const ticket = Buffer.from(parts[5], 'hex');
  // Without a ticket the length may say anything.
  if (ticket.length !== 0 && ticket.length !== Number(parts[4])) wrong('a cut ticket');
  return { kind: 'info', id: number(parts[1], 64), steamId: number(parts[2], 64), name: parts[3], ticket };
}

// ---- The helper's places: its pipe and its log.

const firstVariable = (...names) => names.map((name) => process.env[name]).find((value) => value);

function pipePath() {
  if (isWindows) return '\\\\.\\pipe\\' + PIPE_NAME;
  const folder = firstVariable('TOLLMERE_PIPE_DIR', 'XDG_RUNTIME_DIR') || `/tmp/tollmere-${process.getuid()}`;
  return path.join(folder, PIPE_NAME);
}

// Whether a helper has the pipe, told without opening it: that would take a client's place. Nothing where it can't be.
function isPipeThere() {
  try {
    if (isWindows) return fs.readdirSync('\\\\.\\pipe\\').includes(PIPE_NAME);
    const lock = fs.statSync(pipePath() + '.lock', { throwIfNoEntry: false });
    return lock ? new RegExp(`FLOCK .*:${lock.ino} `).test(fs.readFileSync('/proc/locks', 'latin1')) : false;
  } catch {
    return undefined;
  }
}

function logFiles() {
  const folder = isWindows
    ? process.env.ProgramData || 'C:\\ProgramData'
    : firstVariable('TOLLMERE_PROGRAM_DATA', 'XDG_STATE_HOME') || path.join(os.homedir(), '.local', 'state');
  const name = path.join(folder, 'Tollmere Games', 'Launcher', 'tollmere_steam_helper');
  return [name + '.old.txt', name + '.log'];
}

const sizeOf = (file) => (fs.existsSync(file) ? fs.statSync(file).size : 0);

async function readLog(call, file) {
  // Another helper may just have it to itself.
  for (let tries = 0; tries < 10 && fs.existsSync(file); ++tries) {
    try {
      return fs.readFileSync(file);
    } catch {
      await call.wait(PAUSE);
    }
  }
  return Buffer.alloc(0);
}

// The texts that the last run of this process has left in the log.
function textsOfRun(log, processId) {
  const lines = log.split(/\r?\n/).map((line) => /^\[.{23}\] \[ *(\d+)\] \[ *[\dA-F]+\] (.*)$/.exec(line) || []);
  const texts = lines.filter(([, id]) => Number(id) === processId).map(([, , text]) => text);
  return texts.slice(texts.lastIndexOf('\\'.repeat(33)) + 1);
}

// The code of the failure that these texts tell, and the texts that tell it.
function reasonOf(texts) {
  for (const { code, log } of FAILURES.filter((failure) => failure.log.length > 0)) {
    const lines = log.map((text) => `^${text.replace(/[[\]().*+?^$|{}\\]/g, '\\$&').replace('\\*', '.*')}$`);
    // With the line behind: it may have Windows' number.
    const found = new RegExp(lines.join('[^]*?') + '(\n.*)?', 'm').exec(texts.join('\n'));
    if (found) return { code, told: found[0].split('\n') };
  }
  return { code: 'ended-without-reason', told: [] };
}

// ---- One call with its time-out and its signal. Every wait of it goes through `wait`.

class Call {
  constructor(options) {
    const { timeout = Infinity, signal } = options || {};
    check(isTime(timeout), 'timeout: milliseconds');
    check(!signal || typeof signal.addEventListener === 'function', 'signal: an AbortSignal');
    this.end = performance.now() + timeout;
    this.signal = signal;
    this.restarts = 0;
    this.otherSince = null; // when it was first seen that another's helper runs
  }

  // Resolves with what `begin` hands to its argument, later, or with undefined after so many milliseconds. Rejects when
  // the call is canceled or out of time. However the wait ends, what `begin` has returned is called.
  wait(milliseconds, begin = () => {}) {
    return new Promise((resolve, reject) => {
      const fail = (code) => end(reject, new SteamHelperError(code));
      const left = this.end - performance.now();
      const inTime = Math.min(milliseconds, 0x7fffffff);
      const timer = left > inTime ? setTimeout(() => end(resolve), inTime) : setTimeout(() => fail('timed-out'), left);
      const cancel = () => fail('canceled');
      let undo = null;
      const end = (settle, value) => {
        clearTimeout(timer);
        if (this.signal) this.signal.removeEventListener('abort', cancel);
        if (undo) undo();
        undo = null;
        settle(value);
      };
      if (this.signal && this.signal.aborted) return cancel();
      if (this.signal) this.signal.addEventListener('abort', cancel);
      undo = begin((value) => end(resolve, value)) || null;
    });
  }
}

// ---- The process of a helper that this client has started. It doesn't keep the launcher alive.

class Helper {
  constructor({ helper, appId, directory, environment }) {
    const given = { ...environment, SteamAppId: String(appId), ...(directory && { SteamLocation: directory }) };
    // Windows ignores the case of names, and would take the wrong one of two.
    const key = (name) => (isWindows ? name.toUpperCase() : name);
    const names = new Set([...Object.keys(given), 'SteamLocation'].map(key));
    const kept = Object.entries(process.env).filter(([name]) => !names.has(key(name)));
    // Process ids come back: what the log has before isn't its own.
    this.logSize = sizeOf(logFiles()[1]);
    this.wasConnected = false;
    this.child = spawn(helper, [], {
      cwd: path.dirname(helper), env: { ...Object.fromEntries(kept), ...given },
      // Else Windows would end it together with the launcher.
      detached: true, windowsHide: true, stdio: 'ignore',
    });
    this.child.unref();
    this.failure = new Promise((resolve) => { this.child.on('error', resolve); });
  }

  // What is wrong at once, or a little later.
  static async start(options) {
    if (!fs.existsSync(options.helper)) throw new SteamHelperError('helper-missing', options.helper);
    try {
      const helper = new Helper(options);
      if (helper.processId) return helper;
      throw await helper.failure;
    } catch (error) {
      throw new SteamHelperError('helper-not-started', error.message);
    }
  }

  get processId() { return this.child.pid; }
  get hasEnded() { return this.child.exitCode !== null || this.child.signalCode !== null; }

  // True when it has ended within so many milliseconds.
  async end(call, milliseconds) {
    await call.wait(this.hasEnded ? 0 : milliseconds, (done) => {
      this.child.once('exit', done);
      return () => this.child.off('exit', done);
    });
    return this.hasEnded;
  }

  // Only after its end: it writes late.
  async reason(call) {
    const [old, current] = [await readLog(call, logFiles()[0]), await readLog(call, logFiles()[1])];
    // A log that is shorter than before is a new one.
    const isNew = current.length < this.logSize;
    const log = isNew ? Buffer.concat([old.subarray(this.logSize), current]) : current.subarray(this.logSize);
    const { code, told } = reasonOf(textsOfRun(log.toString(), this.processId));
    const { exitCode, signalCode } = this.child;
    return new SteamHelperError(code, [signalCode || `exit code ${exitCode}`, ...told].join('; '));
  }
}

// ---- An open pipe. One request at a time is on the way; a connection whose answer nobody waits for is closed.

class Connection {
  #socket;
  #bytes = Buffer.alloc(0);
  #deliver = null; // to the one who waits
  isLost = false;

  constructor(socket) {
    this.#socket = socket;
    socket.on('data', (data) => this.#feed(data));
    socket.on('close', () => {
      this.isLost = true;
      if (this.#deliver) this.#deliver('lost');
    });
  }

  // A connection; the error of a try that failed; or nothing when the time is over or the helper has ended.
  static open(call, milliseconds, helper) {
    return call.wait(milliseconds, (done) => {
      let connection = null;
      const ended = () => done();
      const socket = net.connect(pipePath()).unref().on('error', done);
      socket.once('connect', () => done((connection = new Connection(socket))));
      if (helper) helper.child.once('exit', ended);
      return () => {
        if (helper) helper.child.off('exit', ended);
        if (!connection) socket.destroy();
      };
    });
  }

  #feed(data) {
    this.#bytes = Buffer.concat([this.#bytes, data]);
    try {
      const frame = takeFrame(this.#bytes);
      if (frame && this.#deliver) this.#deliver(readAnswer(frame.body));
      this.#bytes = frame ? frame.rest : this.#bytes;
    } catch (error) {
      if (this.#deliver) this.#deliver(error);
    }
  }

  // The answer; 'lost'; or 'silent' after so many milliseconds. Throws bad-answer.
  async ask(call, milliseconds, id, body) {
    if (this.isLost) return 'lost';
    let answer;
    try {
      answer = await call.wait(milliseconds, (done) => {
        this.#deliver = done;
        this.#socket.write(frameOf(body));
        return () => { this.#deliver = null; };
      }) || 'silent';
      if (answer instanceof Error) throw answer;
      if (isObject(answer) && answer.id !== id) throw new SteamHelperError('bad-answer', 'to another request');
    } finally {
      if (!isObject(answer) || answer.id !== id) this.close();
    }
    return answer;
  }

  close() {
    this.isLost = true;
    this.#socket.destroy();
  }
}

// ---- The client.

function checkOptions(options) {
  check(isObject(options), 'options: an object');
  const given = Object.entries(options).filter(([, value]) => value !== undefined);
  const all = {
    directory: '', otherHelper: 'wait', environment: {}, probe: '',
    answerTimeout: 5000, launchTimeout: 30000, startTimeout: 60000, waitTimeout: 60000, ...Object.fromEntries(given),
  };
  check(isText(all.helper) && all.helper !== '', 'helper: the path of the program');
  check(Number.isInteger(all.appId) && all.appId >= 1 && all.appId <= 0x7fffffff, 'appId: 1 to 2147483647');
  const directory = isText(all.directory) && all.directory && path.resolve(all.directory);
  check(directory !== false && Buffer.byteLength(directory) <= 259, 'directory: at most 259 bytes of UTF-8');
  check(['wait', 'use', 'fail'].includes(all.otherHelper), "otherHelper: 'wait', 'use' or 'fail'");
  const times = ['answerTimeout', 'launchTimeout', 'startTimeout', 'waitTimeout'];
  for (const name of times) check(isTime(all[name]), `${name}: milliseconds`);
  check(isObject(all.environment), 'environment: an object');
  check(Object.entries(all.environment).flat().every(isText), 'environment: texts without NUL');
  check(isText(all.probe), 'probe: the path of a program');
  return { ...all, directory, helper: path.resolve(all.helper), probe: all.probe && path.resolve(all.probe) };
}

function hasProgramsHead(file) {
  const head = Buffer.alloc(2);
  const descriptor = fs.openSync(file, 'r');
  fs.readSync(descriptor, head, 0, 2, 0);
  fs.closeSync(descriptor);
  return head.toString('latin1') === 'MZ';
}

// Why the helper couldn't start a game.
function whyRefused(exe, directory) {
  if (!fs.existsSync(exe)) return 'game-missing';
  if (!fs.existsSync(directory) || !fs.statSync(directory).isDirectory()) return 'game-directory-missing';
  try {
    const file = fs.statSync(exe);
    const isProgram = file.isFile() && (isWindows ? hasProgramsHead(exe) : (file.mode & 0o111) !== 0);
    return isProgram ? 'game-refused' : 'game-not-a-program';
  } catch {
    return 'game-refused'; // not even we may look at it
  }
}

class Game {
  constructor(processId) { this.processId = processId; }

  async ended(options) {
    const call = new Call(options);
    for (;;) {
      try {
        process.kill(this.processId, 0);
      } catch (error) {
        if (error.code !== 'EPERM') return;
      }
      await call.wait(1000);
    }
  }
}

class SteamHelper {
  #options;
  #helper = null; // our own
  #usesOther = false; // instead of one of our own
  #isCareful = false; // there was another's pipe just now
  #isOwed = false; // an answer: a helper that can't be reached then is stuck
  #wasStarted = false;
  #connection = null;
  #lastCall = Promise.resolve();
  #lastId = 0n;
  #isStopped = false;
  #restarts = 0;

  constructor(options) { this.#options = checkOptions(options); }

  static async start(options) {
    const client = new SteamHelper(options);
    try {
      await client.#run(options, (call) => client.#connect(call));
    } catch (error) {
      client.#drop();
      // Else the next start would take it for another's.
      if (client.#helper) await client.#kill(new Call()).catch(() => {});
      throw error;
    }
    return client;
  }

  get restarts() { return this.#restarts; }
  get helperProcessId() { return this.#helper && !this.#helper.hasEnded ? this.#helper.processId : null; }

  identity(options) {
    return this.#run(options, async (call) => {
      const { steamId, name, ticket } = await this.#identify(call);
      return { steamId, name, ticket };
    });
  }

  launch(options) {
    return this.#run(options, async (call) => {
      const { exe, args = [], directory = path.dirname(String(exe)) } = options || {};
      check(isText(exe) && exe !== '' && isText(directory), 'exe, directory: paths');
      check(Array.isArray(args) && args.every(isText), 'args: a list of texts without NUL');
      const places = [path.resolve(exe), path.resolve(directory)];
      const id = ++this.#lastId;
      const request = launchRequest(id, ...places, commandLineOf([places[0], ...args]));
      check(frameOf(request).length <= MOST_WRITTEN, 'args: the request is longer than 65,536 bytes');
      // Over a connection that has just answered. Should it break now, nobody knows whether the request was read, and a
      // second one might start a second game.
      await this.#identify(call);
      const answer = await this.#ask(call, this.#options.launchTimeout, id, request).catch((error) => error.code);
      if (answer.kind === 'launch') return new Game(answer.processId);
      if (!isObject(answer)) {
        const code = { lost: 'connection-lost', silent: 'no-answer' }[answer] || answer;
        throw new SteamHelperError(code, 'the game may have been started');
      }
      const code = answer.kind === 'failure' ? whyRefused(...places) : 'bad-answer';
      throw new SteamHelperError(code, places[code === 'game-directory-missing' ? 1 : 0]);
    });
  }

  leave(options) { return this.#run(options, async () => this.#drop()); }

  stop(options) {
    return this.#run(options, async (call) => {
      this.#isStopped = true;
      this.#drop();
      if (!this.#helper || this.#helper.hasEnded) return;
      const error = await this.#askToEnd(call).catch((reason) => reason);
      await this.#kill(new Call());
      if (error instanceof SteamHelperError) throw error;
    });
  }

  // Calls go one after another.
  async #run(options, body) {
    const call = new Call(options);
    const before = this.#lastCall;
    let finished;
    this.#lastCall = new Promise((resolve) => { finished = resolve; });
    try {
      await call.wait(Infinity, (done) => void before.then(done));
      if (this.#isStopped) throw new SteamHelperError('stopped');
      return await body(call);
    } finally {
      before.then(finished);
    }
  }

  #drop() {
    if (this.#connection) this.#connection.close();
    this.#connection = null;
  }

  // Orderly, where there is a way to.
  async #askToEnd(call) {
    const args = ['stop', '--pid', String(this.#helper.processId)];
    const { probe } = this.#options;
    if (isWindows && !probe) return;
    if (probe) spawn(probe, args, { windowsHide: true, stdio: 'ignore' }).on('error', () => {}).unref();
    else this.#helper.child.kill('SIGTERM');
    await this.#helper.end(call, END_LIMIT);
  }

  async #kill(call) {
    if (!this.#helper.hasEnded) this.#helper.child.kill('SIGKILL');
    if (!await this.#helper.end(call, END_LIMIT)) throw new SteamHelperError('no-answer', "the helper can't be ended");
  }

  // An answer, 'lost' or 'silent', of the connection.
  async #ask(call, milliseconds, id, body) {
    this.#isOwed = true;
    const answer = await this.#connection.ask(call, milliseconds, id, body);
    this.#isOwed = !isObject(answer);
    return answer;
  }

  // An identity, whatever it takes: who is silent is ended, and what is lost is opened again.
  async #identify(call) {
    let lostSince = null;
    let why = null;
    for (;;) {
      await this.#connect(call, why);
      const id = ++this.#lastId;
      const answer = await this.#ask(call, this.#options.answerTimeout, id, infoRequest(id));
      if (answer.kind === 'info') return answer;
      if (isObject(answer)) throw new SteamHelperError('bad-answer', 'to another request');
      why = answer === 'silent' ? 'no-answer' : 'connection-lost';
      lostSince = lostSince || performance.now();
      const isHopeless = answer === 'lost' ? performance.now() - lostSince > this.#options.startTimeout : !this.#helper;
      if (isHopeless) throw new SteamHelperError(why, `after ${call.restarts} restarts`);
      if (answer === 'silent') await this.#kill(call);
      else await call.wait(PAUSE);
    }
  }

  // Sees to an open connection. `why` is what to say when the helper was started again too often.
  async #connect(call, why) {
    for (;;) {
      await this.#look(call);
      if (this.#connection) return;
      if (!this.#helper && !this.#usesOther) await this.#startHelper(call, why || 'connection-lost');
      else await this.#open(call);
    }
  }

  // Takes note of what has ended meanwhile. Who comes very early is connected to a helper whose start then fails.
  async #look(call) {
    if (this.#connection && this.#connection.isLost) this.#connection = null;
    if (!this.#helper || !this.#helper.hasEnded) return;
    const { wasConnected } = this.#helper;
    const reason = await this.#helper.reason(call);
    this.#helper = null;
    if (reason.code === 'pipe-taken') {
      this.#isCareful = true;
      await this.#meetOther(call, reason);
    } else if (!wasConnected || reason.phase === 'start') {
      throw reason;
    }
  }

  async #startHelper(call, why) {
    let isThere = isPipeThere();
    if (isThere === undefined && !this.#isCareful) {
      // To open it tells as well. But once: each time another's helper would live for 20 seconds more.
      const result = await Connection.open(call, PAUSE, null);
      if (result instanceof Connection) result.close();
      this.#isCareful = isThere = !(result && result.code === 'ENOENT');
    }
    if (isThere) return this.#meetOther(call, new SteamHelperError('other-helper'));
    if (this.#wasStarted && !this.#isCareful) {
      if (call.restarts === MOST_RESTARTS) throw new SteamHelperError(why, 'it was started again twice');
      ++call.restarts;
      ++this.#restarts;
    }
    const helper = await Helper.start(this.#options);
    this.#helper = helper;
    this.#isOwed = false;
    this.#wasStarted = true;
    // A pipe that is open still when ours has ended is another's.
    helper.child.once('exit', () => this.#options.otherHelper === 'use' || this.#drop());
  }

  async #meetOther(call, error) {
    if (this.#options.otherHelper === 'fail') throw new SteamHelperError('other-helper', error.detail);
    call.otherSince = call.otherSince || performance.now();
    if (performance.now() - call.otherSince > this.#options.waitTimeout) throw error;
    this.#usesOther = this.#options.otherHelper === 'use';
    await call.wait(error.code === 'pipe-taken' ? 20 * PAUSE : PAUSE);
  }

  async #open(call) {
    const helper = this.#helper;
    const isOwed = this.#isOwed && helper;
    const end = performance.now() + (isOwed ? this.#options.answerTimeout : this.#options.startTimeout);
    // Our own says by its end that another's pipe is there.
    if (helper && this.#isCareful) await helper.end(call, 20 * PAUSE);
    while (!helper || !helper.hasEnded) {
      const left = end - performance.now();
      if (left <= 0 && isOwed) return void await this.#kill(call);
      if (left <= 0) throw new SteamHelperError('not-connected');
      const result = await Connection.open(call, left, helper);
      if (result instanceof Connection) {
        this.#connection = result;
        this.#isCareful = false;
        if (helper) helper.wasConnected = true;
        return;
      }
      if (result && ['EACCES', 'EPERM'].includes(result.code)) throw new SteamHelperError('pipe-denied', result.code);
      if (helper) await helper.end(call, PAUSE);
      else await call.wait(PAUSE);
      if (!helper && result && !isPipeThere()) return void (this.#usesOther = false);
    }
  }
}

module.exports = {
  SteamHelperError,
  start: (options) => SteamHelper.start(options),
  // For this project's tests alone: it may change at any time.
  _protocol: { FAILURES, commandLineOf, frameOf, infoRequest, launchRequest, readAnswer, takeFrame },
};

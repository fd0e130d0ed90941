// Drives the Node client: node driver.js INDEX SCRIPT, where INDEX is the client's index.js and SCRIPT a file in JSON,
//     {"options": {those of start}, "report": "FILE", "steps": [STEP...]}
// Appends a line of JSON to the report when a step has ended:
//     {"step": N, "call": "...", "ok": {...} or "error": {code, text, advice, detail}, "restarts": N, "milliseconds": N}
// Ends with 0 when all steps are done, whatever they gave. With "repeat" a step has one line, with its last result or
// error, the sum of restarts and the longest call.
'use strict';

require('./streams.js');
const fs = require('fs');

const [index, script] = process.argv.slice(2);
const { start, SteamHelperError } = require(index);
const { options, report, steps } = JSON.parse(fs.readFileSync(script, 'utf8'));
let client = null;
let game = null;

const pause = (milliseconds) => new Promise((resolve) => { setTimeout(resolve, milliseconds); });

function killHelper() {
  if (client && client.helperProcessId) process.kill(client.helperProcessId, 'SIGKILL');
}

const calls = {
  async start(limits) {
    client = null;
    client = await start({ ...options, ...limits });
    return { helperProcessId: client.helperProcessId };
  },
  async identity(limits) {
    const { steamId, name, ticket } = await client.identity(limits);
    return { steamId: String(steamId), name, ticket: ticket.toString('hex').toUpperCase() };
  },
  async launch(limits, { exe, directory, args }) {
    game = await client.launch({ exe, directory, args, ...limits });
    return { processId: game.processId };
  },
  ended: (limits) => game.ended(limits),
  leave: (limits) => client.leave(limits),
  stop: (limits) => client.stop(limits),
  async killHelper(limits, { afterMilliseconds }) {
    if (afterMilliseconds === undefined) killHelper();
    else setTimeout(killHelper, afterMilliseconds);
  },
  async await(limits, { file }) {
    while (!fs.existsSync(file)) await pause(10);
  },
};
calls.startAgain = calls.start;

async function once(step) {
  const limits = { timeout: step.timeout };
  if (step.cancelAfter !== undefined) {
    const abort = new AbortController();
    limits.signal = abort.signal;
    setTimeout(() => abort.abort(), step.cancelAfter);
  }
  try {
    return { ok: (await calls[step.call](limits, step)) || {} };
  } catch (error) {
    if (client && !(error instanceof SteamHelperError)) return { error: { code: 'no error of the client', detail: String(error.stack) } };
    const { code, text, advice, detail } = error;
    return { error: { code, text, advice, detail } };
  }
}

async function main() {
  for (const [i, step] of steps.entries()) {
    const line = { step: i, call: step.call, restarts: 0, milliseconds: 0 };
    for (let times = step.repeat || 1; times > 0; --times) {
      const restarts = client ? client.restarts : 0;
      const begin = Date.now();
      const result = await once(step);
      if (!line.error) Object.assign(line, result);
      line.restarts += client && !step.call.startsWith('start') ? client.restarts - restarts : 0;
      line.milliseconds = Math.max(line.milliseconds, Date.now() - begin);
    }
    if (line.error) delete line.ok;
    fs.appendFileSync(report, JSON.stringify(line) + '\n');
  }
}

main().then(() => process.exit(0), () => process.exit(1));

// Holds the Node client against what all clients share: node protocol.js INDEX CLIENTS PAGE REPORT, with the client's
// index.js, the folder of vectors.json and failures.json, and operations.md. What differs is in the file REPORT.
'use strict';

require('./streams.js');
const assert = require('assert');
const fs = require('fs');
const path = require('path');

const [index, clients, page, report] = process.argv.slice(2);
const { SteamHelperError, _protocol } = require(index);
const read = (name) => JSON.parse(fs.readFileSync(path.join(clients, name), 'utf8'));
const { requests, answers, wrongFrames, quoting } = read('vectors.json');
const text = (value) => (Buffer.isBuffer(value) ? value.toString('hex').toUpperCase()
  : typeof value === 'bigint' ? String(value) : value);

function testRequest({ name, call: { info, launch }, body, hex }) {
  const made = info ? _protocol.infoRequest(info.id)
    : _protocol.launchRequest(launch.id, launch.exe, launch.directory, launch.arguments);
  assert.strictEqual(made, body, name);
  assert.strictEqual(text(_protocol.frameOf(made)), hex, name);
}

// A frame that isn't whole is none; one that is whole leaves what stands behind it.
function testAnswer({ name, hex, fields }) {
  const bytes = Buffer.from(hex, 'hex');
  for (let size = 0; size < bytes.length; ++size) assert.strictEqual(_protocol.takeFrame(bytes.subarray(0, size)), null, name);
  const { body, rest } = _protocol.takeFrame(Buffer.concat([bytes, bytes.subarray(0, 5)]));
  assert.strictEqual(rest.length, 5, name);
  const answer = Object.entries(_protocol.readAnswer(body)).map(([key, value]) => [key, text(value)]);
  assert.deepStrictEqual(Object.fromEntries(answer), fields, name);
}

function testWrongFrame({ name, hex }) {
  const readFrame = () => _protocol.readAnswer(_protocol.takeFrame(Buffer.from(hex, 'hex')).body);
  assert.throws(readFrame, (error) => error instanceof SteamHelperError && error.code === 'bad-answer', name);
}

try {
  requests.forEach(testRequest);
  answers.forEach(testAnswer);
  wrongFrames.forEach(testWrongFrame);
  for (const { name, args, commandLine } of quoting) assert.strictEqual(_protocol.commandLineOf(args), commandLine, name);
  const failures = read('failures.json').failures;
  assert.deepStrictEqual(_protocol.FAILURES, failures.map(({ code, phase, log = [], text, advice }) => ({ code, phase, log, text, advice })));
  const headings = fs.readFileSync(page, 'utf8').split(/\r?\n/);
  for (const { page: heading } of failures) assert(!heading || headings.includes('### ' + heading), heading);
} catch (error) {
  fs.writeFileSync(report, String(error.stack));
  process.exit(1);
}
process.exit(0);

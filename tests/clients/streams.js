// Loaded before a program that has no console and whose streams are none: under Wine to open them fails, and closing a
// socket looks at one of them. What it prints gets into the file that TOLLMERE_TEST_OUTPUT names.
'use strict';

const { Console } = require('console');
const fs = require('fs');

Object.defineProperty(process, 'stderr', { value: {} });
if (process.env.TOLLMERE_TEST_OUTPUT) {
  const stdout = fs.createWriteStream(process.env.TOLLMERE_TEST_OUTPUT);
  Object.defineProperty(global, 'console', { value: new Console({ stdout }) });
}

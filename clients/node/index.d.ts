/// <reference types="node" />

/** All times are milliseconds. A call that is out of time or canceled fails with `timed-out` or `canceled`. */
export interface CallOptions {
  /** For the whole call, its wait for earlier ones included. Default: none; what it waits for has limits of its own. */
  timeout?: number;
  signal?: AbortSignal;
}

export interface StartOptions extends CallOptions {
  /** Path of tollmere_steam_helper.exe. */
  helper: string;
  /** 1 to 2147483647. */
  appId: number;
  /** The game's folder, for a second try at Steam; at most 259 bytes of UTF-8. Default: the launcher's folder. */
  directory?: string;
  /** When a helper that somebody else started runs. Default: 'wait' until it has ended. */
  otherHelper?: 'wait' | 'use' | 'fail';
  /** Who gives no answer for so long is stuck, and started again. Default: 5000. */
  answerTimeout?: number;
  /** For the answer to a launch: the system may look through the game's program first. Default: 30000. */
  launchTimeout?: number;
  /** From a start to an open pipe. Default: 60000. */
  startTimeout?: number;
  /** How long 'wait' waits. Default: 60000. */
  waitTimeout?: number;
  /** Further variables for the helper, and so for the game. */
  environment?: Record<string, string>;
  /** Path of probe.exe; with it `stop` ends the helper in order on Windows, too. */
  probe?: string;
}

export interface LaunchOptions extends CallOptions {
  /** Path of the game's program. */
  exe: string;
  /** The game's current directory. Default: that of its program. */
  directory?: string;
  /** Without the program's own name, which is put in front. */
  args?: string[];
}

export interface Identity {
  steamId: bigint;
  name: string;
  /** Empty: there is none. */
  ticket: Buffer;
}

export interface Game {
  readonly processId: number;
  /** Resolves when the game has ended; it is looked at each second. */
  ended(options?: CallOptions): Promise<void>;
}

/** Calls may be made at once: they are done one after another. Each rejects with a SteamHelperError. */
export interface SteamHelper {
  identity(options?: CallOptions): Promise<Identity>;
  /** Never repeated once the request was sent: the detail of what fails then says that the game may run. */
  launch(options: LaunchOptions): Promise<Game>;
  /** Closes the connection. The helper ends 20 seconds later, unless the next call comes before. */
  leave(options?: CallOptions): Promise<void>;
  /** Ends the helper, unless it is another's. Every later call fails with `stopped`. */
  stop(options?: CallOptions): Promise<void>;
  /** How often the helper was started again. */
  readonly restarts: number;
  /** Null while no helper of our own runs. */
  readonly helperProcessId: number | null;
}

/** Starts the helper, or joins another's, and connects to it. */
export function start(options: StartOptions): Promise<SteamHelper>;

export class SteamHelperError extends Error {
  /** One of those in the table of README.md. */
  readonly code: string;
  /** When it can happen: at a start, while the helper runs, at a launch, or in any call. */
  readonly phase: 'start' | 'run' | 'launch' | 'call';
  /** What has happened, and what to do, for the user. */
  readonly text: string;
  readonly advice: string;
  /** For logs: exit code, lines of the helper's log, names of arguments. Never the ticket. */
  readonly detail: string;
}

#include "tools/probe/usage.h"

const char kUsage[] = R"(probe: a launcher's end of the Tollmere Steam Helper's pipe, and what the helper leaves behind

  probe [OPTION...] COMMAND [then COMMAND]...
  probe doctor [OPTION...] | log [--run N | --follow] | events | stop [--pid N]

COMMANDS OVER THE PIPE
  info                            asks who the Steam user is. Prints the ticket, too: don't send
                                  that to anybody
  launch EXE [--dir DIR] [--args TEXT]
                                  has a game started: its path, its current directory
                                  (default: its folder), its arguments as one text (default: none),
                                  which begins with the program's name as a rule
  raw HEX [--answers N]           writes these bytes as they are, in one write, and waits for N
                                  answers (default 1; 0: doesn't wait)
Commands with the word `then` between them go over one connection, one after another. The first
that doesn't end well is the last. After the last the probe leaves.

COMMANDS FOR SUPPORT
  doctor [--helper EXE] [--app-id N] [--dir DIR] [--connect]
                                  looks at a set-up and prints a line for each thing: ok, or what
                                  is wrong and what to do. Changes nothing; only with --connect it
                                  asks a helper that runs for the identity. By default EXE is the
                                  helper beside the probe, N is SteamAppId, and DIR SteamLocation
                                  of the environment
  log [--run N | --follow]        lists the runs in the helper's log, the latest last, each with its
                                  verdict: a heading of docs/operations.md, or that nothing is known
                                  yet. With N: shows the lines of one; 1 is the latest. --follow:
                                  shows the lines that reach the log from now on, until --timeout,
                                  if it is given
  events                          shows what the event store says, in words
  stop [--pid N]                  has the helper end as if its window were closed, and waits until
                                  it has (on Windows N may be left out)
They stand alone, without `then`.

OPTIONS
  --id N          request id, 0 to 18446744073709551615 (default: the command's number, from 1)
  --timeout MS    how long to wait for the pipe, for the answers to each command, and for the
                  end of a helper (default 5000)
  --json          prints each answer, run, event or line as one line of JSON; the doctor prints
                  one object
  --pipe NAME     default TollmereSteamHelper
  -v, --verbose   says on standard error who says what, as it happens
  -h, --help      prints this
  --version       prints the version and, if it was built from a clone, the commit

EXIT STATUS
  0  all that was asked for is done     5  the pipe was busy: it serves another client
  1  the answer was `failure`, or the   6  no such log, run, event store or helper
     doctor has found something wrong   7  a file can't be read, or the event store is damaged
  2  the command line makes no sense    8  the helper is another user's, or has more rights
  3  nobody served the pipe in time     9  the helper hasn't ended in time
  4  the connection was lost, or no
     answer came in time

THE PROTOCOL
  Pipe     \\.\pipe\TollmereSteamHelper, in byte mode, both ways; one launcher at a time. Where it
           can't be opened, try again. 20 seconds after the launcher has gone the helper ends.
  Frame    offset 0   4 bytes   length of all that follows, least significant byte first
           offset 4   4 bytes   the id STEA
           offset 8   1 byte    ':'
           offset 9   the rest  the body, text in UTF-8, at least one byte, no terminator
           Write each frame whole, in one write; no more than 65,536 bytes are read at once, and
           what doesn't end within them is lost. Several frames may go in one write.
  Body     a message name and its fields, with one ':' between every two. Numbers are decimal.
  Quoting  Towards the helper a field may stand between double quotes, and then hold anything. A
           backslash goes before each quote and each backslash in it. Always quote paths. An empty
           text is "". The helper's own fields are never quoted.

  launcher to helper                       answer
    info_request:ID                        info_response:ID:STEAMID:PERSONA:LENGTH:TICKET
    launch_request:ID:EXE:DIR:ARGUMENTS    launch_response:ID:PROCESSID   or   failure:ID

  ID         a number of the launcher's choice, 64 bits, given back as it came
  PERSONA    the user's name. It may hold colons: take LENGTH and TICKET from the end.
  LENGTH     of the ticket, in bytes; 0 without a ticket
  TICKET     two upper-case hexadecimal digits a byte
  Messages of another name, and frames of another id, aren't answered.

EXAMPLE
  The body info_request:1 is 14 bytes; with STEA: before it 19, so that 23 bytes go out:
    13 00 00 00  53 54 45 41 3A  69 6E 66 6F 5F 72 65 71 75 65 73 74 3A 31
    length = 19  S  T  E  A  :   i  n  f  o  _  r  e  q  u  e  s  t  :  1
  which is what `probe raw 13000000535445413A696E666F5F726571756573743A31` writes.
  A launch of C:\Games\My Game\game.exe in C:\Games with the arguments game.exe -name "Ada L":
    launch_request:2:"C:\\Games\\My Game\\game.exe":"C:\\Games":"game.exe -name \"Ada L\""
)";

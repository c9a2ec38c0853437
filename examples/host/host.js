// A host in Node.js, which has no pipes of messages and so leaves them to pavo-host. It starts the
// workbench that its arguments name, logs an account in, opens a conversation, changes the presence
// and goes away:
//
//     node host.js PAVO_HOST WORKBENCH [ARGUMENTS...]

"use strict";
const { spawn } = require("child_process");
const readline = require("readline");

const [pavoHost, ...workbench] = process.argv.slice(2);
if (workbench.length === 0) {
  console.error("usage: node host.js PAVO_HOST WORKBENCH [ARGUMENTS...]");
  process.exit(2);
}
const bridge = spawn(pavoHost, ["--json", "--", ...workbench], {
  stdio: ["pipe", "pipe", "inherit"],
});
bridge.on("error", (error) => console.error(error.message));
// That nobody reads any more shows in what comes back: it ends.
bridge.stdin.on("error", () => {});
const exitCode = new Promise((resolve) => bridge.on("close", (code) => resolve(code ?? 1)));

function send(name, ...values) {
  console.log(">", name, JSON.stringify(values));
  bridge.stdin.write(`${name} ${JSON.stringify(values)}\n`);
}

// The end of every message of the workbench.
const END = '","sequence":0,"source":"lx"}';

/** The arguments of a message, undefined when it is none. A text that is not all ASCII comes without
 * its end; pavo-host shows what has come of it and how many bytes that is of how many. */
function argumentsOf(event) {
  const cut = /^\w* (.*) \(cut: (\d+) of (\d+) bytes\)$/s.exec(event.text);
  if (!cut) {
    return event.arguments;
  }
  const [, text, came, length] = cut;
  try {
    return JSON.parse(text + END.slice(came - length)).arguments;
  } catch {
    return undefined;
  }
}

/** The workbench's messages. What the workbench prints is shown. */
async function* receive() {
  for await (const line of readline.createInterface({ input: bridge.stdout })) {
    const event = JSON.parse(line);
    if (event.kind === "received") {
      const values = argumentsOf(event);
      if (values !== undefined) {
        yield { name: event.name, values };
      }
    } else if (event.kind === "output") {
      console.log(event.text);
    }
  }
}
const messages = receive();

/** Reads until a message of each name has come, in whichever order. */
async function waitFor(...names) {
  const missing = new Set(names);
  while (missing.size > 0) {
    const { done, value } = await messages.next();
    if (done) {
      throw new Error("the workbench has gone");
    }
    console.log("<", value.name, JSON.stringify(value.values));
    missing.delete(value.name);
  }
}

async function main() {
  send("Login", "waiter", false, 1, "desktop", "", "secret");
  await waitFor("StartupCompleted", "ChangeStatusCallback");
  send("OpenLXWindow", "customer-7", 3, "order-42");
  send("ChangeStatus", 2);
  await waitFor("ChangeStatusCallback");

  // pavo-host goes away, and the workbench leaves when its host does.
  bridge.stdin.end();
  while (!(await messages.next()).done);
  process.exitCode = await exitCode;
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});

// client.js LIBRARY FOLDER
//
// A client written from docs/binary-interface.md alone: calls all that it describes on the machine that foreign-test.py
// made, whose lock files are in FOLDER, and prints the devices as JSON.
const assert = require("assert");
const fs = require("fs");
const koffi = require("koffi");

const [, , libraryFile, folder] = process.argv;
const listSlots = ["int32_t getVersion(void*)", "bool isStale(void*)", "void refresh(void*, _Inout_ Status*)",
  "uint32_t getCount(void*)", "void* getDevice(void*, uint32_t, int32_t, _Inout_ Status*)", "void release(void*)",
  "void attach(void*, uint64_t, _Inout_ Status*)", "void detach(void*, uint64_t)"];
const deviceSlots = ["int32_t getVersion(void*)", "str getPersistentToken(void*, uint32_t)",
  "uint32_t getSortKey(void*)", "void setNumber(void*, uint32_t, _Inout_ Status*)", "uint32_t getNumber(void*)", null,
  null, "str getAlias(void*)", "void setAlias(void*, str, int32_t, int32_t, _Inout_ Status*)"];

const Status = koffi.struct("Status", {structSize: "uint32_t", code: "int32_t", component: "char[10]",
  file: "char[101]", line: "uint32_t", reserved: "uint64_t", rest: koffi.array("uint8_t", 72, "Array")});
assert.strictEqual(koffi.sizeof(Status), 208);
const makeStatus = (structSize = 208, code = 0) =>
  ({structSize, code, component: "-", file: "-", line: 7, reserved: 7, rest: Array(72).fill(7)});

// The methods of an object; `types` are those of its slots.
const typesOf = (slots) => slots.map((slot, index) =>
  slot && koffi.proto(slot.replace(/(\w+)\(/, `$1_${slots.length}_${index}(`)));
function object(address, slots, types) {
  const table = koffi.decode(address, "void*"), methods = {};
  slots.forEach((slot, index) => {
    if (slot)
      methods[/(\w+)\(/.exec(slot)[1]] =
        koffi.decode(koffi.decode(table, 8 * index, "void*"), types[index]).bind(null, address);
  });
  return methods;
}
const listTypes = typesOf(listSlots), deviceTypes = typesOf(deviceSlots);

// Calls what reports into a status block. Returns its result; fails unless it reports this.
function reports(code, site, call, structSize = 208) {
  const status = makeStatus(structSize), result = call(status);
  assert.strictEqual(status.code, code);
  if (structSize < 208 || code === 0) // the rest was not touched
    assert.deepStrictEqual(status, makeStatus(structSize, code));
  else
    assert.match([status.component, status.file, status.line, status.reserved].join(), site);
  return result;
}

const library = koffi.load(libraryFile);
const initialize = library.func("int32_t vykeldevenum_initialize()");
const getAllKelDevices = library.func("int32_t vykeldevenum_getAllKelDevices(int32_t, _Inout_ void**)");
const finalize = library.func("int32_t vykeldevenum_finalize()");

function makeList() {
  const address = [null];
  assert.strictEqual(getAllKelDevices(0, address), 0);
  return object(address[0], listSlots, listTypes);
}

function getDevice(list, index) {
  return object(reports(0, null, (status) => list.getDevice(index, 0, status)), deviceSlots, deviceTypes);
}

function tryList(list) {
  const token = 2n ** 64n - 2n;
  assert.deepStrictEqual([list.getVersion(), list.isStale(), list.getCount()], [0, true, 0]);
  fs.renameSync(folder, folder + "-"); // no lock file can be made
  reports(-50209, /^eldevenum,\S*includes\/\S*,\d+,0$/, list.refresh);
  fs.renameSync(folder + "-", folder);
  assert.deepStrictEqual([list.isStale(), list.getCount(), getDevice(list, 2).getNumber()], [true, 5, 4294967295]);
  reports(0, null, list.refresh);
  assert.deepStrictEqual([list.isStale(), list.getCount()], [false, 5]);
  const site = /^vykeldeve,\S*source\/\S*\.cpp,\d\d,0$/;
  assert.strictEqual(reports(-52005, site, (status) => list.getDevice(5, 0, status)), null);
  for (const structSize of [8, 9, 207, 208])
    assert.strictEqual(reports(-63193, site, (status) => list.getDevice(0, 3, status), structSize), null);
  const failed = makeStatus(208, -1);
  list.refresh(failed); // does nothing
  assert.deepStrictEqual(failed, makeStatus(208, -1));
  reports(0, null, (status) => list.attach(token, status));
  reports(-52005, /^,,0,0$/, (status) => list.attach(token, status)); // one plug-in takes a token only once
  list.detach(token);
  reports(0, null, (status) => list.attach(token, status));
}

function tryDevice(device, lamp) {
  reports(0, null, (status) => device.setNumber(4294967294, status));
  reports(0, null, (status) => device.setAlias("Wäge \u{1F600}", 1, 0, status));
  reports(-52005, /^simulated,,0,0$/, (status) => lamp.setAlias("L", 1, 0, status));
  assert.deepStrictEqual([device.getNumber(), device.getAlias()], [4294967294, "Wäge \u{1F600}"]);
  assert.notStrictEqual(device.getPersistentToken(1), device.getPersistentToken(2));
}

function show(device, index) {
  const number = device.getNumber();
  return {index, number: number === 4294967295 ? null : number, alias: device.getAlias(), version: device.getVersion(),
    sortKey: device.getSortKey(), token: device.getPersistentToken(1)};
}

assert.deepStrictEqual([initialize(), initialize(), finalize(), getAllKelDevices(1, [null])], [0, 0, 0, -63193]);
const list = makeList(), second = makeList();
tryList(list);
tryDevice(getDevice(list, 0), getDevice(list, 2));
list.release();
reports(0, null, second.refresh);
const devices = Array.from({length: second.getCount()}, (_, index) => show(getDevice(second, index), index));
second.release();
assert.deepStrictEqual([finalize(), finalize(), getAllKelDevices(0, [null])], [0, -52003, -52003]);
console.log(JSON.stringify(devices));

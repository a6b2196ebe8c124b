// Client.exe FOLDER DEVICES
//
// A client with the .NET binding on the machine that foreign-test.py made, whose lock files are in FOLDER and whose
// first plug-in's devices are in the file DEVICES: prints the devices as JSON.
using System;
using System.IO;
using System.Linq;
using System.Text;
using System.Threading.Tasks;
using Vykel.Devices;

internal static class Client
{
    private static void Expect(object actual, object expected)
    {
        if (!Equals(actual, expected))
            throw new Exception("there is <" + actual + ">, expected was <" + expected + ">");
    }

    private static TError Fails<TError>(Action action) where TError : Exception
    {
        try { action(); }
        catch (TError error) { return error; }
        throw new Exception("no " + typeof(TError).Name);
    }

    private static void FailsWith(StatusCode code, string place, Action action)
    {
        StatusException error = Fails<StatusException>(action);
        Expect(error.Code, code);
        Expect(error.Component + " " + Path.GetFileName(error.File) + (error.Line > 0), place);
        Expect(error.Message.Contains(error.File + ", line " + error.Line), error.File != "");
    }

    private static void TryList(DeviceList list, string folder)
    {
        Expect((list.Count, list.IsStale, list.Any()), (0, true, false));
        Directory.Move(folder, folder + "-"); // no lock file can be made
        FailsWith(StatusCode.ConfigurationFault, "eldevenum FileLock.cppTrue", list.Refresh);
        Directory.Move(folder + "-", folder);
        Expect((list.IsStale, list.Count, list[2].Number), (true, 5, (uint?)null));
        list.Refresh();
        Expect((list.Count, list.IsStale), (5, false));
        Fails<ArgumentOutOfRangeException>(() => list.GetDevice(5, 0));
        Fails<ArgumentOutOfRangeException>(() => list.GetDevice(-1, 0));
        FailsWith(StatusCode.VersionMismatch, "vykeldeve AggregatedDeviceList.cppTrue",
            () => list.GetDevice(0, 3));
        list.Attach(ulong.MaxValue);
        FailsWith(StatusCode.InvalidParameter, " False", () => list.Attach(ulong.MaxValue));
        list.Detach(ulong.MaxValue);
        list.Attach(ulong.MaxValue);
    }

    private static void TryDevices(DeviceList list)
    {
        Device pump = list.First(), lamp = list[2], zoo = list[3];
        pump.SetAlias("Wäge \U0001F600");
        Expect(pump.Alias, "Wäge \U0001F600");
        FailsWith(StatusCode.InvalidParameter, "simulated False", () => lamp.SetAlias("L"));
        Fails<ArgumentNullException>(() => pump.SetAlias(null));
        Fails<ArgumentException>(() => pump.SetAlias("a\0b"));
        Fails<ArgumentOutOfRangeException>(() => pump.GetToken(3));
        Expect((pump.GetToken(), pump.GetToken(2)), ("left/pump", @"USB\VID_1D50&PID_6018\0001"));
        Fails<PluginException>(() => zoo.GetToken(2));
    }

    private static void TryEnds()
    {
        foreach (string end in new[] {"refresh", "list", "library"})
        {
            var library = new Library();
            DeviceList list = library.CreateDeviceList();
            list.Refresh();
            Device device = list[0];
            Action[] uses = {() => device.Alias?.Trim(), () => device.Number?.ToString(), () => device.GetToken(),
                () => device.Version.ToString(), () => device.SortKey.ToString(), () => device.SetAlias("x")};
            Action[] ofList = {list.Refresh, () => list.First(), () => list.GetDevice(0, 0), () => list.Attach(1),
                () => list.Detach(1), () => list.Count.ToString(), () => list.IsStale.ToString()};
            if (end == "refresh")
                list.Refresh();
            else
                (end == "list" ? (IDisposable)list : library).Dispose();
            foreach (Action use in end == "refresh" ? uses : uses.Concat(ofList))
                Fails<ObjectDisposedException>(use);
            library.Dispose();
            list.Dispose();
            library.Dispose();
            Fails<ObjectDisposedException>(() => library.CreateDeviceList());
        }
        Expect(File.ReadAllText("/proc/self/maps").Contains("left.so"), false); // each library was finalised
    }

    private static void TryThreads(string devices)
    {
        using (var library = new Library())
        using (DeviceList list = library.CreateDeviceList())
            Parallel.For(0, 200, round =>
            {
                File.SetLastWriteTimeUtc(devices, DateTime.UtcNow); // so that the refresh makes new ones
                list.Refresh();
                try { Expect(list.Any(device => device.Alias == "-"), false); }
                catch (ObjectDisposedException) { } // another thread refreshed the list
            });
    }

    private static string Quoted(string text) => text == null ? "null" : "\"" + text + "\"";

    private static void Main(string[] arguments)
    {
        using (var library = new Library())
        using (DeviceList list = library.CreateDeviceList())
        {
            TryList(list, arguments[0]);
            TryDevices(list);
            Console.OutputEncoding = new UTF8Encoding(false);
            Console.WriteLine("[" + string.Join(",", list.Select((device, index) => "{\"index\":" + index
                + ",\"number\":" + (device.Number?.ToString() ?? "null") + ",\"alias\":" + Quoted(device.Alias)
                + ",\"version\":" + device.Version + ",\"sortKey\":" + device.SortKey
                + ",\"token\":" + Quoted(device.GetToken()) + "}")) + "]");
        }
        TryEnds();
        TryThreads(arguments[1]);
    }
}

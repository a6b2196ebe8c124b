// Lists the devices of this machine. Exit codes: 0 listed, 1 failed, 4 listed with a warning.

using System;
using Vykel.Devices;

internal static class Program
{
    private static int Main()
    {
        int result = 0;
        try
        {
            using (var library = new Library())
            using (DeviceList devices = library.CreateDeviceList())
            {
                try
                {
                    devices.Refresh(); // do it again whenever devices.IsStale says so
                }
                catch (StatusException error)
                {
                    Console.Error.WriteLine("warning: " + error.Message); // the devices may be readable all the same
                    result = 4;
                }
                foreach (Device device in devices)
                    Console.WriteLine((device.Number is uint number ? "KEL" + number : "no number") + "  "
                        + (device.Alias ?? "takes no alias") + "  " + device.GetToken());
            }
        }
        catch (StatusException error)
        {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
        return result;
    }
}

// Lists the devices of the VY-KEL driver family. README.md beside this file shows how.

using System;
using System.Collections;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;

namespace Vykel.Devices
{
    /// <summary>The codes of the library itself. A plug-in may report negative codes of its own.</summary>
    public enum StatusCode
    {
        /// <summary>No error.</summary>
        Success = 0,
        /// <summary>A lock file or the legacy alias file cannot be used.</summary>
        ConfigurationFault = -50209,
        /// <summary>Memory is exhausted.</summary>
        MemoryFull = -52000,
        /// <summary>Not initialised, or a failure that has no code of its own.</summary>
        GeneralFault = -52003,
        /// <summary>A cast failed; only a faulty plug-in causes this.</summary>
        BadCast = -52004,
        /// <summary>An argument is invalid, or a plug-in cannot be loaded.</summary>
        InvalidParameter = -52005,
        /// <summary>A registry key or a standard folder cannot be read.</summary>
        ResourceNotFound = -52006,
        /// <summary>An object of the operating system cannot be used.</summary>
        OsFault = -52008,
        /// <summary>A plug-in was asked for a list while not initialised.</summary>
        PluginNotInitialized = -52010,
        /// <summary>A device or an interface has another version.</summary>
        VersionMismatch = -63193
    }

    /// <summary>A call of the library, or of a device, failed.</summary>
    public sealed class StatusException : Exception
    {
        internal StatusException(string action, int code, string component = "", string file = "", uint line = 0)
            : base(Describe(action, code, file, line))
        {
            Code = (StatusCode)code;
            Component = component;
            File = file;
            Line = line;
        }

        /// <summary>The code, negative. One that <see cref="StatusCode"/> does not name is a plug-in's own.</summary>
        public StatusCode Code { get; }

        /// <summary>The code's name; null for a plug-in's own code.</summary>
        public string Name => Enum.GetName(typeof(StatusCode), Code);

        /// <summary>At most nine characters of the component that raised the error; empty when unknown.</summary>
        public string Component { get; }

        /// <summary>The source file that raised the error; empty when unknown.</summary>
        public string File { get; }

        /// <summary>The line in <see cref="File"/>; 0 when unknown.</summary>
        public uint Line { get; }

        private static string Describe(string action, int code, string file, uint line)
        {
            string name = Enum.GetName(typeof(StatusCode), code);
            return action + " failed with code " + code + (name == null ? "" : " (" + name + ")")
                + (file.Length == 0 ? "" : ", raised in " + file + ", line " + line)
                + "; 'vykeldev doctor' looks for the cause";
        }
    }

    /// <summary>A plug-in broke the contract. <c>vykeldev check</c> reports what is wrong with it.</summary>
    public sealed class PluginException : Exception
    {
        internal PluginException(string message) : base(message)
        {
        }
    }

    /// <summary>The library, initialised: it has loaded the registered plug-ins.</summary>
    /// <remarks>
    /// Several may be open. Disposing of the last one unloads the plug-ins; the next one loads those that are
    /// registered then. There are no finalizers: what is never disposed of lives until the process ends. Any thread may
    /// use any object; calls on one list and its devices wait for each other.
    /// </remarks>
    public sealed class Library : IDisposable
    {
        private readonly HashSet<DeviceList> lists = new HashSet<DeviceList>(); // the open ones; locked by every call
        private bool disposed;

        /// <summary>Loads the library and its plug-ins.</summary>
        /// <exception cref="StatusException">The library cannot be initialised.</exception>
        /// <exception cref="DllNotFoundException">The system does not find the library.</exception>
        /// <exception cref="BadImageFormatException">The process is not a 64-bit one.</exception>
        public Library()
        {
            Native.Check("initialising the library", Native.vykeldevenum_initialize());
        }

        /// <summary>Makes a list over all plug-ins. It is empty until its first refresh.</summary>
        /// <exception cref="StatusException">The list cannot be made.</exception>
        /// <exception cref="ObjectDisposedException">The library was disposed of.</exception>
        public DeviceList CreateDeviceList()
        {
            lock (lists)
            {
                if (disposed)
                    throw new ObjectDisposedException(nameof(Library));
                Native.Check("making a list", Native.vykeldevenum_getAllKelDevices(0, out IntPtr address));
                var made = new DeviceList(this, address);
                lists.Add(made);
                return made;
            }
        }

        /// <summary>Disposes of the lists that are still open, then of the library. May be called again.</summary>
        public void Dispose()
        {
            lock (lists)
            {
                if (disposed)
                    return;
                disposed = true;
                foreach (DeviceList list in lists.ToArray())
                    list.Dispose();
                Native.vykeldevenum_finalize();
            }
        }

        internal void Forget(DeviceList list)
        {
            lock (lists)
                lists.Remove(list);
        }
    }

    /// <summary>The devices of a machine after the last refresh.</summary>
    /// <remarks>Made by <see cref="Library.CreateDeviceList"/>; disposed of with its library at the latest.</remarks>
    public sealed class DeviceList : IReadOnlyList<Device>, IDisposable
    {
        private readonly Library library;
        private readonly IntPtr address;
        private readonly Native.ListOperations operations;
        private readonly object gate = new object();
        private bool disposed;

        internal DeviceList(Library owner, IntPtr nativeAddress)
        {
            library = owner;
            address = nativeAddress;
            operations = Native.TableOf<Native.ListOperations>(nativeAddress);
        }

        /// <summary>The number of devices after the last refresh; 0 before the first.</summary>
        /// <exception cref="ObjectDisposedException">The list was disposed of. Every member raises this.</exception>
        public int Count => Call(() => checked((int)operations.GetCount(address)));

        /// <summary>Whether a refresh may show anything new. Cheap; ask as often as you like.</summary>
        public bool IsStale => Call(() => operations.IsStale(address));

        /// <summary>The device at an index.</summary>
        /// <exception cref="ArgumentOutOfRangeException">The index is not below <see cref="Count"/>.</exception>
        public Device this[int index] => GetDevice(index, 0);

        /// <summary>Looks for devices, gives numbers to new ones, and ends the devices handed out before.</summary>
        /// <remarks>
        /// Waits without limit while another process numbers devices. A plug-in that fails is left out without an
        /// error.
        /// </remarks>
        /// <exception cref="StatusException">
        /// The refresh failed. The list may have devices all the same, some without a number: look at it.
        /// </exception>
        public void Refresh()
        {
            Call(() =>
            {
                ++Refreshes; // first: the devices end even when the refresh fails
                return Native.Report("refreshing the list",
                    (ref Native.StatusBlock status) => operations.Refresh(address, ref status));
            });
        }

        /// <summary>The device at an index, unless it is older than <paramref name="minimumVersion"/>.</summary>
        /// <exception cref="ArgumentOutOfRangeException">The index is not below <see cref="Count"/>.</exception>
        /// <exception cref="StatusException">The device is older (VersionMismatch).</exception>
        public Device GetDevice(int index, int minimumVersion)
        {
            return Call(() =>
            {
                if (index < 0 || index >= Count)
                    throw new ArgumentOutOfRangeException(nameof(index), index, "the list has " + Count + " devices");
                IntPtr device = IntPtr.Zero;
                Native.Report("getting a device", (ref Native.StatusBlock status) =>
                    device = operations.GetDevice(address, (uint)index, minimumVersion, ref status));
                return new Device(this, device);
            });
        }

        /// <summary>Passes a token, which only plug-ins understand, on to every plug-in.</summary>
        /// <exception cref="StatusException">A plug-in refuses the token; then none keeps it.</exception>
        public void Attach(ulong token)
        {
            Call(() => Native.Report("attaching",
                (ref Native.StatusBlock status) => operations.Attach(address, token, ref status)));
        }

        /// <summary>Withdraws a token from every plug-in.</summary>
        public void Detach(ulong token)
        {
            Call(() =>
            {
                operations.Detach(address, token);
                return true;
            });
        }

        /// <summary>The devices after the last refresh. The next refresh ends them, even within a loop.</summary>
        public IEnumerator<Device> GetEnumerator()
        {
            return Call(() => Enumerable.Range(0, Count).Select(index => this[index]).ToList()).GetEnumerator();
        }

        IEnumerator IEnumerable.GetEnumerator()
        {
            return GetEnumerator();
        }

        /// <summary>Ends the list and its devices. May be called again.</summary>
        public void Dispose()
        {
            lock (gate)
            {
                if (!disposed)
                    operations.Release(address);
                disposed = true;
            }
            library.Forget(this); // after the lock: the library locks its lists the other way round
        }

        internal uint Refreshes { get; private set; }

        /// <summary>Calls the list or a device of it, alone, while the list lives.</summary>
        internal TResult Call<TResult>(Func<TResult> call)
        {
            lock (gate)
            {
                if (disposed)
                    throw new ObjectDisposedException(nameof(DeviceList));
                return call();
            }
        }
    }

    /// <summary>One device, as a list hands it out. Its plug-in is asked for every property anew.</summary>
    /// <remarks>
    /// It ends when its list is refreshed or disposed of; after that, every member raises
    /// <see cref="ObjectDisposedException"/>. Keep the number or the token of a device, not the object.
    /// </remarks>
    public sealed class Device
    {
        private readonly DeviceList list;
        private readonly IntPtr address;
        private readonly uint refreshes; // how often the list was refreshed when it handed the device out
        private readonly Native.DeviceOperations operations;

        internal Device(DeviceList owner, IntPtr nativeAddress)
        {
            list = owner;
            address = nativeAddress;
            refreshes = owner.Refreshes;
            operations = Native.TableOf<Native.DeviceOperations>(nativeAddress);
        }

        /// <summary>The machine-wide number n of KELn; null when the device has none.</summary>
        public uint? Number => Call(() =>
        {
            uint number = operations.GetNumber(address);
            return number == uint.MaxValue ? (uint?)null : number;
        });

        /// <summary>The alias; null when the device takes none, an empty text when it has none yet.</summary>
        public string Alias => Call(() => Native.Text(operations.GetAlias(address)));

        /// <summary>The version of the device's interface.</summary>
        public int Version => Call(() => operations.GetVersion(address));

        /// <summary>Orders the devices that have no number yet: lower keys are numbered first.</summary>
        public uint SortKey => Call(() => operations.GetSortKey(address));

        /// <summary>A text that names the device for good.</summary>
        /// <param name="format">1 or 2: one of two forms of the token. Always use the same one.</param>
        /// <exception cref="ArgumentOutOfRangeException">The format is neither 1 nor 2.</exception>
        /// <exception cref="PluginException">The plug-in gives no token.</exception>
        public string GetToken(int format = 1)
        {
            if (format != 1 && format != 2)
                throw new ArgumentOutOfRangeException(nameof(format), format, "there are the formats 1 and 2");
            return Call(() => Native.Text(operations.GetPersistentToken(address, (uint)format)))
                ?? throw new PluginException(
                    "a device has no token of format " + format + ": 'vykeldev check' its plug-in");
        }

        /// <summary>Gives the device an alias, which its plug-in keeps for good.</summary>
        /// <exception cref="ArgumentException">The alias holds a NUL character.</exception>
        /// <exception cref="StatusException">The plug-in refuses the alias.</exception>
        public void SetAlias(string alias)
        {
            if (alias == null)
                throw new ArgumentNullException(nameof(alias));
            if (alias.IndexOf('\0') >= 0)
                throw new ArgumentException("an alias cannot hold a NUL character", nameof(alias));
            byte[] text = Encoding.UTF8.GetBytes(alias + '\0');
            Call(() => Native.Report("setting the alias", (ref Native.StatusBlock status) =>
                operations.SetAlias(address, text, 1, 0, ref status)));
        }

        private TResult Call<TResult>(Func<TResult> call)
        {
            return list.Call(() =>
            {
                if (refreshes != list.Refreshes)
                    throw new ObjectDisposedException(nameof(Device), "the list was refreshed: ask it anew");
                return call();
            });
        }
    }

    /// <summary>The binary contract. Names, order and types are those of vykel/vykel_c.h.</summary>
    internal static class Native
    {
        private const string File = "vykeldevenum"; // vykeldevenum.dll, libvykeldevenum.so

        [DllImport(File, ExactSpelling = true)]
        internal static extern int vykeldevenum_initialize();

        [DllImport(File, ExactSpelling = true)]
        internal static extern int vykeldevenum_getAllKelDevices(int version, out IntPtr list);

        [DllImport(File, ExactSpelling = true)]
        internal static extern int vykeldevenum_finalize();

        /// <summary>The record into which an operation reports its outcome.</summary>
        [StructLayout(LayoutKind.Sequential)]
        internal struct StatusBlock
        {
            internal uint StructSize;
            internal int Code;
            [MarshalAs(UnmanagedType.ByValArray, SizeConst = 10)]
            internal byte[] Component;
            [MarshalAs(UnmanagedType.ByValArray, SizeConst = 101)]
            internal byte[] File;
            internal uint Line;
            internal ulong Reserved;
            [MarshalAs(UnmanagedType.ByValArray, SizeConst = 72)]
            internal byte[] Unassigned;
        }

        // What the slots hold. 64-bit processes have one calling convention, so there is none to name.
        internal delegate int ToInt(IntPtr self);
        internal delegate uint ToUInt(IntPtr self);
        [return: MarshalAs(UnmanagedType.I1)]
        internal delegate bool ToBool(IntPtr self);
        internal delegate void ReleaseOperation(IntPtr self);
        internal delegate IntPtr ToText(IntPtr self);
        internal delegate IntPtr FormatToText(IntPtr self, uint format);
        internal delegate void RefreshOperation(IntPtr self, ref StatusBlock status);
        internal delegate IntPtr GetDeviceOperation(IntPtr self, uint index, int minimum, ref StatusBlock status);
        internal delegate void AttachOperation(IntPtr self, ulong token, ref StatusBlock status);
        internal delegate void DetachOperation(IntPtr self, ulong token);
        internal delegate void SetAliasOperation(IntPtr self, byte[] alias, int one, int zero, ref StatusBlock status);

        /// <summary>The slots of a list that may be called.</summary>
        [StructLayout(LayoutKind.Sequential)]
        internal sealed class ListOperations
        {
            internal ToInt GetVersion;
            internal ToBool IsStale;
            internal RefreshOperation Refresh;
            internal ToUInt GetCount;
            internal GetDeviceOperation GetDevice;
            internal ReleaseOperation Release;
            internal AttachOperation Attach;
            internal DetachOperation Detach;
        }

        /// <summary>The nine slots of a device.</summary>
        [StructLayout(LayoutKind.Sequential)]
        internal sealed class DeviceOperations
        {
            internal ToInt GetVersion;
            internal FormatToText GetPersistentToken;
            internal ToUInt GetSortKey;
            internal IntPtr SetNumber; // for the library only
            internal ToUInt GetNumber;
            internal IntPtr Reserved1;
            internal IntPtr Reserved2;
            internal ToText GetAlias;
            internal SetAliasOperation SetAlias;
        }

        /// <summary>The table of the object at this address.</summary>
        internal static TTable TableOf<TTable>(IntPtr address)
        {
            return Marshal.PtrToStructure<TTable>(Marshal.ReadIntPtr(address));
        }

        internal delegate void Reporting(ref StatusBlock status);

        /// <summary>Calls an operation that reports into a status block; raises the error that it reports.</summary>
        internal static bool Report(string action, Reporting call)
        {
            var status = new StatusBlock
            {
                StructSize = (uint)Marshal.SizeOf<StatusBlock>(),
                Component = new byte[10],
                File = new byte[101],
                Unassigned = new byte[72]
            };
            call(ref status);
            if (status.Code < 0)
                throw new StatusException(action, status.Code, Text(status.Component), Text(status.File), status.Line);
            return true;
        }

        internal static void Check(string action, int code)
        {
            if (code < 0)
                throw new StatusException(action, code);
        }

        /// <summary>A copy of a text of the library. What is not UTF-8 becomes U+FFFD.</summary>
        internal static string Text(IntPtr text)
        {
            if (text == IntPtr.Zero)
                return null;
            int length = 0;
            while (Marshal.ReadByte(text, length) != 0)
                ++length;
            var bytes = new byte[length];
            Marshal.Copy(text, bytes, 0, length);
            return Encoding.UTF8.GetString(bytes);
        }

        private static string Text(byte[] field)
        {
            int end = Array.IndexOf(field, (byte)0);
            return Encoding.UTF8.GetString(field, 0, end < 0 ? field.Length : end);
        }
    }
}

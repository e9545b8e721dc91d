// C#: `dynamic` binds by name and passes `ref` variables by reference. An imported type library
// takes a handle for 32 bits, and DPInitialize writes 64: do not bind early. 64-bit processes only.
//     dotnet new console, then this file as Program.cs
using System;

static class Anywhere
{
    [STAThread]
    static void Main()
    {
        dynamic depots = Activator.CreateInstance(Type.GetTypeFromProgID("DepotIntr.DepotIntrApi", true));
        int session = depots.DPInitialize();
        try
        {
            depots.Quiet(session, true);
            depots.DPLoadFile(ref session, @"<Work>\Sessions\office.kre");
            string value = "";
            depots.DPGetProfileString(session, "Host", "Name", "(not set)", ref value, 260);
            Console.WriteLine("Host: " + value);

            foreach (object path in (object[])depots.Find(session, @"<Work>\Sessions", ".kre"))
                Console.WriteLine(path);
            if (!depots.Copy(session, @"<Work>\Sessions\office.kre", @"<Work>\copy.kre", true))
                Console.WriteLine("Failed with " + depots.LastErrorCode(session) + ": " + depots.LastErrorText(session));
        }
        finally
        {
            depots.DPUnInitialize(session);
        }
    }
}

// The same way in JScript, which has no variables by reference: handles are returned, not filled in.
var api = new ActiveXObject("DepotIntr.DepotIntrApi");
var session = api.DPInitialize();
WScript.Echo("session " + (session > 0));
WScript.Echo("default " + api.DPGetDefaultDPPath(session));
api.DPLoadFile(session, "<Work>\\Sessions\\office.kre");
WScript.Echo("Host.Port " + (api.DPGetProfileInt(session, "Host", "Port", 0) + 1));
WScript.Echo("Host.Absent " + api.DPGetProfileInt(session, "Host", "Absent", 7));
api.DPSetProfileString(session, "Host", "Port", "99");
WScript.Echo("Host.Port " + api.DPGetProfileInt(session, "Host", "Port", 0));
api.DPFlushFile(session);
api.DPUnInitialize(session);
WScript.Echo("end");

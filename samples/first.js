// A first client in JScript: reads and writes a session profile without knowing where it is kept.
var PROFILE = "<Work>\\Sessions\\office.kre";

var depots = new ActiveXObject("DepotIntr.DepotIntrApi");
var session = depots.DPInitialize();

WScript.Echo("Default depot:  " + depots.DPGetDefaultDPPath(session));
WScript.Echo("Kept in:        " + depots.DPPathConvertDPtoFS(PROFILE));
depots.DPLoadFile(session, PROFILE);

// Variables are never passed by address here, so texts beyond the result are out of reach: numbers are
// read, and texts are written.
WScript.Echo("[Host] Port:    " + depots.DPGetProfileInt(session, "Host", "Port", 23));
WScript.Echo("[Screen] Rows:  " + depots.DPGetProfileInt(session, "Screen", "Rows", 24));
WScript.Echo("[Screen] Zoom:  " + depots.DPGetProfileInt(session, "Screen", "Zoom", 100));
depots.DPSetProfileString(session, "Screen", "Zoom", "150");
WScript.Echo("[Screen] Zoom:  " + depots.DPGetProfileInt(session, "Screen", "Zoom", 100));

depots.DPUnInitialize(session);
WScript.Echo("Session ended.");

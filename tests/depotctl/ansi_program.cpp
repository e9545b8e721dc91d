// depotctl without its manifest, so that it runs in the system's own code page. All of it is linked
// in.

// Tessaly tree menu: what the browser offers. The tree needs the standard DOM only; an
// old browser without it gets the page's notice instead of a broken tree.
var browserInfo = (function () {
  "use strict";
  var ua = navigator.userAgent || "";
  var info = {
    dom: !!(document.getElementById && document.createElement && window.addEventListener),
    framed: window.top !== window.self,
    name: /Edg\//.test(ua) ? "Edge" : /Firefox\//.test(ua) ? "Firefox"
        : /Chrom(e|ium)\//.test(ua) ? "Chromium" : /Safari\//.test(ua) ? "Safari" : "Other"
  };
  if (document.documentElement && document.documentElement.classList)
    document.documentElement.classList.add(info.dom ? "dom" : "nodom");
  return info;
})();
var isDOM = browserInfo.dom;

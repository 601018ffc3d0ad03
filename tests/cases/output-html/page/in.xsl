<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:template match="/"><html><head><title>T</title><style>a &gt; b {}</style></head><body><h1>H</h1><ul><li>one</li><li><b>two</b></li></ul><p>x<br/>y</p><hr/></body></html></xsl:template>
</xsl:stylesheet>

<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html"/>
<xsl:template match="/"><div><div/><b>x</b><div><p>y</p></div></div></xsl:template>
</xsl:stylesheet>

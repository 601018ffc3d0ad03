<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output omit-xml-declaration="yes" indent="yes"/>
  <xsl:template match="/">
    <xsl:copy-of select="/"/>
    <xsl:copy-of select="document('other.xml')"/>
    <xsl:variable name="fragment"><xsl:copy-of select="/|document('other.xml')"/></xsl:variable>
    <xsl:copy-of select="$fragment"/>
  </xsl:template>
</xsl:stylesheet>

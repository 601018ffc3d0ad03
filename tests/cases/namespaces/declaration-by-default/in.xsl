<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output omit-xml-declaration="yes" indent="yes"/>
  <xsl:template match="/r">
    <results>
      <xsl:copy-of select="."/>
      <xsl:copy><xsl:copy-of select="@*"/></xsl:copy>
    </results>
  </xsl:template>
</xsl:stylesheet>

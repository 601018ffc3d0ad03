<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform" xmlns:d="urn:d">
  <xsl:output omit-xml-declaration="yes"/>
  <xsl:template match="/d:r"><xsl:copy-of select="namespace::*"/><xsl:copy-of select="*"/></xsl:template>
</xsl:stylesheet>

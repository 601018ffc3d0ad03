<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="text"/><xsl:param name="a" select="0"/><xsl:param name="b" select="0"/><xsl:template match="/"><xsl:value-of select="$a"/>,<xsl:value-of select="$b"/></xsl:template>
</xsl:stylesheet>
